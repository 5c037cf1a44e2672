#include "solver/file_signature.h"

#include "foundation/text.h"

#include <boost/filesystem/operations.hpp>
#include <cryptopp/sha.h>

#include <array>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace corvath::zel {
namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;

std::string ToHex(const std::array<unsigned char, CryptoPP::SHA512::DIGESTSIZE>& digest) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(2 * digest.size());
  for (const unsigned char byte : digest) {
    hex += kDigits[byte >> 4];
    hex += kDigits[byte & 0xF];
  }
  return hex;
}

}  // namespace

std::string FileSignature(const std::wstring& path) {
  const std::string file = utils::ToUtf8(path);
  boost::system::error_code error;
  if (!boost::filesystem::exists(boost::filesystem::status(file, error)))
    throw std::runtime_error("file doesn't exist");

  // In blocks: a project that has just been opened is in memory once already.
  std::ifstream stream(file, std::ios::binary);
  std::vector<char> block(kBlockSize);
  CryptoPP::SHA512 hash;
  while (stream) {
    stream.read(block.data(), static_cast<std::streamsize>(block.size()));
    hash.Update(reinterpret_cast<const unsigned char*>(block.data()),
                static_cast<std::size_t>(stream.gcount()));
  }
  if (!stream.eof()) throw std::runtime_error("Error while reading \"" + file + "\"");

  std::array<unsigned char, CryptoPP::SHA512::DIGESTSIZE> digest;
  hash.Final(digest.data());
  return ToHex(digest);
}

std::string BytesSignature(std::string_view bytes) {
  CryptoPP::SHA512 hash;
  hash.Update(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  std::array<unsigned char, CryptoPP::SHA512::DIGESTSIZE> digest;
  hash.Final(digest.data());
  return ToHex(digest);
}

}  // namespace corvath::zel
