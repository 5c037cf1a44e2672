#pragma once

#include "foundation/exception.h"
#include "foundation/text_stream.h"

namespace corvath::algorithm::optimizer {

/// Throws utils::runtime_error with the parts as a wide stream prints them one after the other.
template <class... Parts>
[[noreturn]] void Refuse(const Parts&... parts) {
  utils::WideTextStream text;
  (text << ... << parts);
  throw utils::runtime_error(text.str());
}

/// Runs `action`; what it throws comes out as utils::runtime_error with `text` in front.
template <class Action>
void WithContext(const wchar_t* text, Action&& action) {
  try {
    action();
  } catch (const std::exception& error) {
    Refuse(text, L" ", utils::MessageOf(error));
  }
}

}  // namespace corvath::algorithm::optimizer
