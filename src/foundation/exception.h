#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace corvath::utils {

/// Mix-in of the wide-text exceptions: keeps the message as it was given.
class exception {
 public:
  explicit exception(std::wstring message) : message_(std::move(message)) {}
  virtual ~exception();
  virtual const std::wstring& GetMessage() const { return message_; }

 private:
  std::wstring message_;
};

/// `message` as `what()` shows it: narrowed by the codecvt facet of the global locale, "?" for each
/// character that it cannot express. Never throws for lack of a conversion.
std::string NarrowForWhat(const std::wstring& message);

/// The exceptions of the data classes. `what()` may lose characters that `GetMessage()` keeps.
class runtime_error : public std::runtime_error, public exception {
 public:
  explicit runtime_error(const std::wstring& message)
      : std::runtime_error(NarrowForWhat(message)), utils::exception(message) {}
};
class logic_error : public std::logic_error, public exception {
 public:
  explicit logic_error(const std::wstring& message)
      : std::logic_error(NarrowForWhat(message)), utils::exception(message) {}
};
class out_of_range : public std::out_of_range, public exception {
 public:
  explicit out_of_range(const std::wstring& message)
      : std::out_of_range(NarrowForWhat(message)), utils::exception(message) {}
};
class invalid_argument : public std::invalid_argument, public exception {
 public:
  explicit invalid_argument(const std::wstring& message)
      : std::invalid_argument(NarrowForWhat(message)), utils::exception(message) {}
};

/// The text of any exception for a log line: GetMessage() where it has one, else what() as UTF-8.
std::wstring MessageOf(const std::exception& error);

}  // namespace corvath::utils
