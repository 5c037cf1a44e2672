#include "study/options.h"

#include "study/describe/text_table.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace corvath::study {
namespace {

[[noreturn]] void RefuseType(const std::string& key, const char* wanted, const Json::Value& given) {
  static const char* const kNames[] = {"null",   "a number",  "a number", "a number",
                                       "a text", "a Boolean", "an array", "an object"};
  throw Refusal(key + ": " + wanted + " is wanted, not " + kNames[given.type()]);
}

/// Names and texts of a project end at a NUL: what is behind it would be lost.
std::string TextOf(const std::string& key, const Json::Value& value) {
  std::string text = value.asString();
  if (text.find('\0') != std::string::npos) throw Refusal(key + ": a text with a NUL character");
  return text;
}

}  // namespace

Json::Value ParseJson(const char* text, const char* what) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["strictRoot"] = false;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  std::string errors;
  bool parsed = false;
  try {
    parsed = reader->parse(text, text + std::strlen(text), &value, &errors);
  } catch (const Json::Exception& error) {  // nested too deeply
    errors = error.what();
  }
  if (parsed) return value;
  std::replace(errors.begin(), errors.end(), '\n', ' ');
  errors.erase(0, std::min(errors.find_first_not_of("* "), errors.size()));
  errors.erase(errors.find_last_not_of(' ') + 1);
  throw Refusal(std::string(what) + ": no JSON: " + errors);
}

Options::Options(const char* text, std::initializer_list<const char*> known)
    : object_(Json::objectValue) {
  if (text == nullptr || *text == '\0') return;
  object_ = ParseJson(text, "options");
  if (!object_.isObject()) RefuseType("options", "a JSON object", object_);
  const std::vector<std::string> names(known.begin(), known.end());
  for (const std::string& key : object_.getMemberNames())
    if (std::find(names.begin(), names.end(), key) == names.end())
      throw Refusal("options: there is no option " + Quoted(key) +
                    (names.empty() ? "" : "; " + NameHint(key, names, "the options are")));
}

bool Options::GetBool(const char* key, bool otherwise) const {
  if (!Has(key)) return otherwise;
  if (!object_[key].isBool()) RefuseType(key, "true or false", object_[key]);
  return object_[key].asBool();
}

double Options::GetNumber(const char* key, double otherwise) const {
  if (!Has(key)) return otherwise;
  if (!object_[key].isNumeric() || object_[key].isBool()) RefuseType(key, "a number", object_[key]);
  return object_[key].asDouble();
}

std::vector<double> Options::GetNumbers(const char* key) const {
  std::vector<double> numbers;
  if (!Has(key)) return numbers;
  if (!object_[key].isArray()) RefuseType(key, "an array of numbers", object_[key]);
  for (const Json::Value& number : object_[key]) {
    if (!number.isNumeric() || number.isBool()) RefuseType(key, "an array of numbers", number);
    numbers.push_back(number.asDouble());
  }
  return numbers;
}

std::uint64_t Options::GetCount(const char* key, std::uint64_t otherwise,
                                std::uint64_t most) const {
  if (!Has(key)) return otherwise;
  GetNumber(key, 0.0);  // is it one?
  if (!object_[key].isUInt64() || object_[key].asUInt64() > most)
    throw Refusal(
        std::string(key) + ": " +
        (object_[key].isIntegral() ? object_[key].asString() : Short(object_[key].asDouble())) +
        " is no whole number from 0 to " + std::to_string(most));
  return object_[key].asUInt64();
}

std::string Options::GetText(const char* key) const {
  if (!Has(key)) return {};
  if (!object_[key].isString()) RefuseType(key, "a text", object_[key]);
  return TextOf(key, object_[key]);
}

std::vector<std::string> Options::GetNames(const char* key) const {
  std::vector<std::string> names;
  if (!Has(key)) return names;
  if (!object_[key].isArray()) RefuseType(key, "an array of texts", object_[key]);
  for (const Json::Value& name : object_[key]) {
    if (!name.isString()) RefuseType(key, "an array of texts", name);
    names.push_back(TextOf(key, name));
  }
  return names;
}

std::vector<std::string> Options::GetUniqueNames(const char* key) const {
  std::vector<std::string> names = GetNames(key);
  for (auto name = names.begin(); name != names.end(); ++name) {
    if (name->empty()) throw Refusal(std::string(key) + ": an empty name");
    if (std::find(names.begin(), name, *name) != name)
      throw Refusal(std::string(key) + ": " + Quoted(*name) + " stands there twice");
  }
  return names;
}

std::vector<std::string> Options::GetSelection(const char* key, const std::vector<std::string>& all,
                                               const char* kind) const {
  if (!Has(key)) return {};
  if (object_[key].isBool()) return object_[key].asBool() ? all : std::vector<std::string>();
  if (!object_[key].isArray()) RefuseType(key, "true, false or an array of texts", object_[key]);
  std::vector<std::string> names = GetUniqueNames(key);
  for (const std::string& name : names)
    if (std::find(all.begin(), all.end(), name) == all.end())
      throw Refusal(std::string(key) + ": no " + kind + ' ' + Quoted(name) + "; " +
                    NameHint(name, all, std::string("the ") + kind + "s are"));
  return names;
}

}  // namespace corvath::study
