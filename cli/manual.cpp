#include "manual.h"

#include "foundation/build_version.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <vector>

namespace cli {
namespace {

/// What help has no room for.
constexpr char kEnd[] = R"(.SH EXAMPLES
What a project holds, its predictions at designs of a table, and at new ones:
.PP
.nf
zel info zel_tenbar.vrdb
zel solve zel_tenbar.vrdb \-\-in points.csv \-\-errors
zel sample \-\-scheme sobol \-\-n 8 \-\-from zel_tenbar.vrdb \-\-out new.csv
zel solve zel_tenbar.vrdb \-\-in new.csv \-\-criteria \-\-out result.csv
.fi
)";

/// Text that roff prints as it stands: no escapes, no requests at the start of a line, and dashes
/// and quotes that can be copied to a shell.
std::string Roff(const std::string& text) {
  std::string out;
  bool line_start = true;
  for (const char c : text) {
    if (line_start && (c == '.' || c == '\'')) out += "\\&";
    switch (c) {
      case '\\':
        out += "\\e";
        break;
      case '-':
        out += "\\-";
        break;
      case '\'':
        out += "\\(aq";
        break;
      case '^':
        out += "\\(ha";
        break;
      case '~':
        out += "\\(ti";
        break;
      case '`':
        out += "\\(ga";
        break;
      default:
        out += c;
    }
    line_start = c == '\n';
  }
  return out;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Roff(text) + "\\fR";
}
std::string Italic(const std::string& text) {
  return "\\fI" + Roff(text) + "\\fR";
}

std::vector<std::string> Paragraphs(const std::string& text) {
  std::vector<std::string> paragraphs;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find("\n\n", begin), text.size());
    if (end > begin) paragraphs.push_back(text.substr(begin, end - begin));
    begin = end + 2;
  }
  return paragraphs;
}

/// Flowing text, or the lines as they are where they are indented.
std::string Body(const std::string& paragraph) {
  if (paragraph.front() == ' ') return ".nf\n" + Roff(paragraph) + "\n.fi\n";
  return Roff(paragraph) + '\n';
}

std::string Description(const std::string& text) {
  std::string out;
  for (const std::string& paragraph : Paragraphs(text))
    out += (out.empty() ? "" : ".PP\n") + Body(paragraph);
  return out;
}

std::string Names(const std::set<CLI::Option*>& options) {
  std::string names;
  for (const CLI::Option* const option : options)
    names += (names.empty() ? "" : ", ") + Bold(option->get_name());
  return names;
}

std::string Heading(const CLI::Option& option) {
  if (option.get_positional()) return Italic(option.get_name(true));
  std::string names;
  for (const std::string& name : option.get_snames())
    names += (names.empty() ? "" : ", ") + Bold("-" + name);
  for (const std::string& name : option.get_lnames())
    names += (names.empty() ? "" : ", ") + Bold("--" + name);
  const std::string value = ValueName(option);
  return names + (value.empty() ? "" : " " + Italic(value));
}

std::string Entry(const CLI::Option& option) {
  std::string out = ".TP\n" + Heading(option) + '\n' + Roff(option.get_description());
  const auto add = [&out](const std::string& sentence) { out += ".\n" + sentence; };
  if (!option.get_default_str().empty()) add("Default: " + Roff(option.get_default_str()));
  if (option.get_required() && !option.get_positional()) add("Required");
  if (!option.get_needs().empty()) add("Only with " + Names(option.get_needs()));
  if (!option.get_excludes().empty()) add("Not with " + Names(option.get_excludes()));
  return out + ".\n";
}

/// Options that help shows: positionals first, then the others in their order.
std::string Entries(const CLI::App& app, bool with_help) {
  std::string positionals;
  std::string others;
  for (const CLI::Option* const option : app.get_options())
    if (!option->get_group().empty() && (with_help || option != app.get_help_ptr()))
      (option->get_positional() ? positionals : others) += Entry(*option);
  return positionals + others;
}

std::string Command(const CLI::App& app) {
  std::string out = ".SS zel " + Roff(app.get_name()) + "\n.B zel " + Roff(app.get_name()) + "\n[" +
                    Italic("options") + ']';
  for (const CLI::Option* const option : app.get_options())
    if (option->get_positional())
      out += ' ' + (option->get_required() ? Italic(option->get_name(true))
                                           : '[' + Italic(option->get_name(true)) + ']');
  out += "\n.PP\n" + Description(app.get_description()) + Entries(app, /*with_help=*/false);
  // A footer that is the program's own stands at the end of the page.
  if (app.get_footer() != app.get_parent()->get_footer())
    out += ".PP\n" + Description(app.get_footer());
  return out;
}

std::string Section(const std::string& paragraph) {
  const std::size_t colon = paragraph.find(": ");
  if (colon == std::string::npos) return ".SH NOTES\n" + Body(paragraph);
  std::string title = paragraph.substr(0, colon);
  for (char& c : title) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return ".SH " + title + '\n' + Body(paragraph.substr(colon + 2));
}

}  // namespace

std::string ValueName(const CLI::Option& option) {
  if (option.get_expected_max() == 0 || option.get_type_size() == 0) return "";  // a flag
  const std::string type = option.get_type_name();
  if (type.empty() && option.get_positional()) return option.get_name(true);
  return type.substr(0, type.find(':'));  // without the names of its checks
}

std::string ManualPage(const CLI::App& app) {
  const auto& version = corvath::utils::GetBuildVersion();
  std::string out = ".\\\" Made by the program from its own help.\n.TH ZEL 1 " + version.date +
                    " \"zelsolver " + version.text + "\" \"User Commands\"\n.SH NAME\nzel \\- " +
                    Roff(app.get_description()) + "\n.SH SYNOPSIS\n.B zel\n[" + Italic("options") +
                    "] " + Italic("command") + " ...\n.SH OPTIONS\n" +
                    Entries(app, /*with_help=*/true) + ".SH COMMANDS\n";
  for (const CLI::App* const command : app.get_subcommands(nullptr))
    if (!command->get_group().empty()) out += Command(*command);
  for (const std::string& paragraph : Paragraphs(app.get_footer())) out += Section(paragraph);
  return out + kEnd;
}

}  // namespace cli
