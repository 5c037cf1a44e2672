#include "commands.h"
#include "foundation/text.h"
#include "solver/file_signature.h"
#include "standard_output.h"

#include <exception>

namespace cli {

void RunHash(const std::string& file) {
  std::string signature;
  try {
    signature = corvath::zel::FileSignature(corvath::utils::FromUtf8(file));
  } catch (const std::exception& error) {
    throw Refusal(file + ": " + error.what());
  }
  PrintResult(signature + '\n');
}

}  // namespace cli
