#include "commands.h"
#include "foundation/text.h"
#include "solver/file_signature.h"

#include <exception>
#include <iostream>

namespace cli {

void RunHash(const std::string& file) {
  try {
    std::cout << corvath::zel::FileSignature(corvath::utils::FromUtf8(file)) << '\n';
  } catch (const std::exception& error) {
    throw Refusal(file + ": " + error.what());
  }
}

}  // namespace cli
