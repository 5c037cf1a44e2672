#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::exchange {

/// Writes a JSON document piece by piece. Numbers read back exactly, in as few characters as that
/// takes. The text is safe inside an HTML document: it holds no "<", ">" or "&".
class JsonWriter {
 public:
  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  void Key(std::string_view name);
  void Text(std::string_view utf8);
  void Number(double number);  ///< null for what is not finite, which JSON does not have
  void Count(std::size_t count);
  void Truth(bool truth);
  void Null();
  void Document(std::string_view json);  ///< a whole value, written elsewhere; made as safe

  // Whole members of an object.
  void Text(std::string_view key, std::string_view utf8) { Key(key), Text(utf8); }
  void Number(std::string_view key, double number) { Key(key), Number(number); }
  void Numbers(std::string_view key, const std::vector<double>& numbers);

  /// A member or element on a line of its own.
  void NewLine() { line_ = true; }
  const std::string& GetText() const { return text_; }

 private:
  void Open(char bracket);
  void Close(char bracket);
  void Separate();
  void AppendText(std::string_view utf8);

  std::string text_;
  bool first_ = true;  ///< no comma is due
  bool after_key_ = false;
  bool line_ = false;
};

}  // namespace corvath::exchange
