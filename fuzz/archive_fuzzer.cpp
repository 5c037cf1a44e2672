// The portable archive: the first byte says which kind of object the rest is taken for.

#include "archive/archive_flags.h"
#include "archive/instantiate.h"
#include "archive/portable_iarchive.h"
#include "design/designs/design.h"
#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "seeds.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <sstream>
#include <string>

namespace {

template <class T>
void Read(std::istream& stream) {
  corvath::portable_binary_iarchive archive(stream, corvath::archive::kSilentOnMismatch);
  T value{};
  archive >> boost::serialization::make_nvp("value", value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  try {
    switch (data[0]) {
      case fuzz::kValue:
        Read<corvath::math::Value>(stream);
        break;
      case fuzz::kDesigns:
        Read<corvath::algorithm::datatypes::DesignManager>(stream);
        break;
      case fuzz::kParameters:
        Read<corvath::algorithm::datatypes::ParameterManager>(stream);
        break;
      case fuzz::kContainers:
        Read<fuzz::Containers>(stream);
        break;
      default:
        break;
    }
  } catch (const std::exception&) {
    // a refusal
  }
  return 0;
}
