#include "project/file/file_header.h"

#include "project/file/json_writing.h"
#include "project/vrdb.h"

#include <json/reader.h>
#include <json/value.h>
#include <json/writer.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace corvath::algorithm::datatypes {
namespace {

constexpr std::size_t kMagicLength = 4;
constexpr char kMagic[kMagicLength + 1] = "VRDB";

std::uint32_t ReadWord(std::istream& stream) {
  std::array<char, 4> bytes{};
  stream.read(bytes.data(), bytes.size());
  std::uint32_t word = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    word = word << 8 | static_cast<unsigned char>(bytes[i]);
  return word;
}

void WriteWord(std::ostream& stream, std::uint32_t word) {
  for (int i = 0; i < 4; ++i, word >>= 8) stream.put(static_cast<char>(word & 0xffu));
}

/// Reads in pieces, so that a false length costs no more memory than the stream holds.
std::string ReadText(std::istream& stream, std::uint32_t length) {
  constexpr std::size_t kPiece = std::size_t{1} << 16;
  std::string text;
  while (text.size() < length && stream) {
    const std::size_t begin = text.size();
    text.resize(begin + std::min(kPiece, length - begin));
    stream.read(&text[begin], static_cast<std::streamsize>(text.size() - begin));
  }
  return text;
}

std::string ToText(const Json::Value& root) {
  Json::StreamWriterBuilder builder;
  builder["commentStyle"] = "None";
  builder["indentation"] = "";
  builder["useSpecialFloats"] = true;
  return WriteJson(builder, root);
}

/// Three numbers separated by points at the start of `text`, whatever follows. False without them.
bool ParseVersion(std::string_view text, std::array<Json::UInt64, 3>& numbers) {
  const char* place = text.data();
  const char* const end = place + text.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (place == end || *place++ != '.')) return false;
    const auto [behind, error] = std::from_chars(place, end, numbers[i]);
    if (error != std::errc()) return false;
    place = behind;
  }
  return true;
}

std::string GetVersionText(const VRDB& project) {
  if (project.HasMetaData(L"stelvanix version_full") || project.HasMetaData(L"stelvanix version"))
    return project.GetMetaData(L"stelvanix version");
  return {};
}

}  // namespace

FileHeader ReadFileHeader(std::istream& stream) {
  std::array<char, kMagicLength> magic{};
  stream.read(magic.data(), magic.size());
  FileHeader header;
  if (!std::equal(magic.begin(), magic.end(), kMagic)) {
    stream.seekg(0);
    return header;
  }
  header.flag = ReadWord(stream);
  const std::uint32_t length = ReadWord(stream);
  if (stream) header.text = ReadText(stream, length);
  return header;
}

void WriteFileHeader(std::ostream& stream, const FileHeader& header) {
  if (header.text.size() > UINT32_MAX) throw std::length_error("The header text is too long.");
  stream.write(kMagic, kMagicLength);
  WriteWord(stream, header.flag);
  WriteWord(stream, static_cast<std::uint32_t>(header.text.size()));
  stream.write(header.text.data(), static_cast<std::streamsize>(header.text.size()));
}

std::string CompleteHeaderText(const std::string& text, const boost::filesystem::path& file) {
  Json::CharReaderBuilder builder;
  builder["collectComments"] = false;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  try {
    Json::Value root;
    if (!reader->parse(text.data(), text.data() + text.size(), &root, nullptr)) return text;
    if (!root.isObject()) return text;
    root["current filename"] = file.filename().string();
    return ToText(root);
  } catch (const Json::Exception&) {  // nested too deeply, or a number that it cannot hold
    return text;
  }
}

std::string BuildHeaderText(const VRDB& project, const boost::filesystem::path& file) {
  Json::Value root(Json::objectValue);
  root["encoding"] = "UTF-8";
  Json::Value& version = root["version"];
  Json::Value& writer = version["stelvanix"] = Json::Value(Json::objectValue);
  version["file"] = 0;
  version["vrdb"] = project.GetClassVersion();
  std::array<Json::UInt64, 3> numbers{};
  if (ParseVersion(GetVersionText(project), numbers)) {
    writer["major"] = numbers[0];
    writer["minor"] = numbers[1];
    writer["maintenance"] = numbers[2];
    writer["revision"] = -1;
  }
  if (project.HasMetaData(L"stelvanix suffix"))
    writer["suffix"] = project.GetMetaData(L"stelvanix suffix");
  if (project.HasMetaData(L"last_write_time"))
    root["datetime"]["last write"] = project.GetMetaData(L"last_write_time");
  return CompleteHeaderText(ToText(root), file);
}

}  // namespace corvath::algorithm::datatypes
