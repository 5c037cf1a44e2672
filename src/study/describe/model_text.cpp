#include "study/describe/model_text.h"

#include <algorithm>
#include <charconv>

namespace corvath::study {

std::string CoPText(double cop, int digits) {
  if (cop == -1.0) return "-";
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, cop, std::chars_format::fixed, digits);
  return std::string(text, end.ptr);
}

std::string UsedInputs(const std::vector<std::string>& inputs, const std::vector<bool>& filtered,
                       const std::vector<double>& cops) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (!filtered[i]) order.push_back(i);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return cops[a] > cops[b]; });
  std::string text;
  for (const std::size_t i : order) {
    text += (text.empty() ? "" : ", ") + inputs[i];
    if (cops[i] != -1.0) text += ' ' + CoPText(cops[i], 2);
  }
  return text;
}

std::string LargeLosses(const std::string& response, double cop,
                        const std::vector<std::string>& inputs, const std::vector<bool>& filtered,
                        const std::vector<double>& cops) {
  constexpr double kClearly = 0.05;
  std::string text;
  // A single input has none to act together with, and of nothing, nothing can be lost.
  if (!(cop > 0.0) || std::count(filtered.begin(), filtered.end(), false) < 2) return text;
  for (std::size_t i = 0; i < inputs.size(); ++i)
    if (!filtered[i] && cops[i] > cop + kClearly)
      text += (text.empty() ? response + ": " : ", ") + inputs[i];
  return text;
}

std::string LargeLossNote(const std::vector<std::string>& found) {
  constexpr std::size_t kMaxListed = 8;
  if (found.empty()) return {};
  std::string text = "A loss above the CoP (";
  for (std::size_t i = 0; i < found.size() && i < kMaxListed; ++i)
    text += (i == 0 ? "" : "; ") + found[i];
  if (found.size() > kMaxListed) text += "; ...";
  return text +
         "): without this input, the rest of the model as it is, predictions are worse than the "
         "mean. Inputs that act together take along what they explain only together; few designs "
         "or many equal ones do the rest.";
}

}  // namespace corvath::study
