#include "study/describe/help_text.h"

#include "foundation/text.h"
#include "study/describe/text_table.h"

#include <algorithm>
#include <complex>
#include <sstream>
#include <utility>

namespace corvath::study {

using corvath::utils::ToUtf8;

std::string PlainText(std::wstring_view markup) {
  static const std::pair<std::wstring_view, const char*> kTags[] = {
      {L"<br>", "\n"}, {L"<sub>", ""}, {L"</sub>", ""}, {L"<sup>", "^"}, {L"</sup>", ""}};
  std::string text;
  while (!markup.empty()) {
    const auto tag = std::find_if(std::begin(kTags), std::end(kTags), [&](const auto& t) {
      return markup.substr(0, t.first.size()) == t.first;
    });
    if (tag == std::end(kTags)) {
      text += ToUtf8(markup.substr(0, 1));
      markup.remove_prefix(1);
      continue;
    }
    text += tag->second;
    markup.remove_prefix(tag->first.size());
    if (tag->first == L"<sup>" && markup.substr(0, markup.find(L'<')).size() > 1) {
      const std::size_t end = markup.find(L'<');  // x^(1/n): what is raised stays together
      text += "(" + ToUtf8(markup.substr(0, end)) + ")";
      markup.remove_prefix(std::min(end, markup.size()));
    }
  }
  return text;
}

std::string FirstSentence(const std::string& text) {
  const std::string line = text.substr(0, text.find('\n'));
  const std::size_t stop = line.find(". ");
  return stop == std::string::npos ? line : line.substr(0, stop + 1);
}

std::string Wrapped(const std::string& text, const std::string& indent) {
  constexpr std::size_t kWidth = 80;
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::string wrapped = indent;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      if (wrapped.size() > indent.size() && wrapped.size() + 1 + word.size() > kWidth) {
        result += wrapped + '\n';
        wrapped = indent;
      }
      if (wrapped.size() > indent.size()) wrapped += ' ';
      wrapped += word;
    }
    result += wrapped + '\n';
  }
  return result;
}

std::string DescribeConstant(const corvath::calculator::Constant& constant) {
  std::string value;
  if (constant.value.IsBoolean()) {
    value = constant.value.GetBoolean() ? "true" : "false";
  } else {
    const std::complex<double> z = constant.value.GetScalar();
    value = z.imag() == 0.0 ? Short(z.real()) : Short(z.imag()) + " i";
  }
  return value + ", " + ToUtf8(constant.use);
}

}  // namespace corvath::study
