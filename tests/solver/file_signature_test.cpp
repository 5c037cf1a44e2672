#include "solver/file_signature.h"

#include "foundation/text.h"
#include "support/temporary_directory.h"
#include "support/testing.h"

namespace corvath::zel {
namespace {

TEST(FileSignature, IsTheSha512OfTheBytes) {
  const support::TemporaryDirectory directory;
  // FIPS 180-4, examples of SHA-512; the last is NIST's message of a million "a".
  const std::pair<std::string, const char*> cases[] = {
      {"",
       "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
       "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e"},
      {"abc",
       "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
       "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
      {std::string(1000000, 'a'),
       "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
       "de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b"},
  };
  for (const auto& [bytes, expected] : cases) {
    const std::string path = directory.File(
        "pr\xc3\xb6"
        "ject.vrdb");
    support::WriteFile(path, bytes);
    EXPECT_EQ(FileSignature(utils::FromUtf8(path)), expected) << bytes.size();
  }
}

TEST(FileSignature, RefusesWhatIsNoFile) {
  const support::TemporaryDirectory directory;
  const auto refusal = [](const std::string& path) {
    return support::MessageOf([&] { FileSignature(utils::FromUtf8(path)); });
  };
  EXPECT_EQ(refusal(directory.File("missing")), "file doesn't exist");
  EXPECT_EQ(refusal(directory.GetPath().string()),
            "Error while reading \"" + directory.GetPath().string() + "\"");
}

}  // namespace
}  // namespace corvath::zel
