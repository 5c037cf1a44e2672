#pragma once

#include <json/json.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace corvath::study {

/// Parses a JSON text. @param what  names it in messages: "options"
/// @throws Refusal  it is none; with the place
Json::Value ParseJson(const char* text, const char* what);

/// The options of a call: a JSON object whose keys are known.
class Options {
 public:
  /// @param text  null or empty: no options
  /// @throws Refusal  it is no JSON object, or has another key than `known`
  Options(const char* text, std::initializer_list<const char*> known);

  bool Has(const char* key) const { return object_.isMember(key); }
  // Each refuses a value of another type or out of range by name.
  bool GetBool(const char* key, bool otherwise = false) const;
  double GetNumber(const char* key, double otherwise) const;
  std::uint64_t GetCount(const char* key, std::uint64_t otherwise, std::uint64_t most) const;
  std::vector<double> GetNumbers(const char* key) const;
  std::string GetText(const char* key) const;  ///< empty without the option
  std::vector<std::string> GetNames(const char* key) const;
  /// @throws Refusal  one is empty or stands there twice
  std::vector<std::string> GetUniqueNames(const char* key) const;
  /// An option that takes true for all of `all`, false for none, or names of some.
  /// @throws Refusal  a name is none of `all`, or stands there twice. @param kind  "response", for the message
  std::vector<std::string> GetSelection(const char* key, const std::vector<std::string>& all,
                                        const char* kind) const;

 private:
  Json::Value object_;
};

}  // namespace corvath::study
