#include "study/table/criterion_names.h"

#include "calculator/calculator.h"
#include "calculator/parser.h"
#include "design/indexed_name.h"
#include "foundation/text.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"
#include "study/table/name_hint.h"

#include <algorithm>

namespace corvath::study {
namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

bool IsDigit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

bool IsNameCharacter(wchar_t c) {
  return corvath::calculator::BeginsName(c) || IsDigit(c);
}

struct Token {
  enum class Kind { kBlank, kName, kQuotedName, kString, kComparison, kOther };
  Kind kind;
  std::wstring text;  ///< of quoted ones what is between the quotes
};

class Tokens {
 public:
  /// @throws Refusal  a backquote is not closed
  explicit Tokens(const std::wstring& text) {
    using Kind = Token::Kind;
    for (std::size_t i = 0; i < text.size();) {
      const wchar_t c = text[i];
      std::size_t end = i + 1;
      if (c == L'`' || c == L'"') {
        end = text.find(c, i + 1);
        if (end == std::wstring::npos && c == L'`')
          throw Refusal("criterion " + Quoted(ToUtf8(text)) + ": a ` is not closed");
        if (end != std::wstring::npos) {
          Add(c == L'`' ? Kind::kQuotedName : Kind::kString, text.substr(i + 1, end - i - 1));
          i = end + 1;
          continue;
        }
        end = text.size();  // the parser tells what is wrong
      } else if (c == L' ' || c == L'\t') {
        Add(Kind::kBlank, text.substr(i, 1));
        ++i;
        continue;
      } else if ((c == L'=' || c == L'!') && text[i + 1] == L'=') {
        Add(Kind::kComparison, text.substr(i, 2));
        i += 2;
        continue;
      } else if (IsNameCharacter(c) || c == L'$' || c == L'#') {
        while (end < text.size() && IsNameCharacter(text[end])) ++end;
        const bool is_name = !IsDigit(c) && c != L'$' && c != L'#';
        const bool is_call = end < text.size() && text[end] == L'(';
        Add(is_name && !is_call ? Kind::kName : Kind::kOther, text.substr(i, end - i));
        i = end;
        continue;
      }
      Add(Kind::kOther, text.substr(i, end - i));
      i = end;
    }
  }

  std::vector<Token>& GetAll() { return tokens_; }

  /// The next token that is no blank, forward (1) or backward (-1); null at the end.
  Token* Next(std::size_t from, int step) {
    for (auto i = static_cast<std::ptrdiff_t>(from) + step;
         i >= 0 && i < static_cast<std::ptrdiff_t>(tokens_.size()); i += step)
      if (tokens_[static_cast<std::size_t>(i)].kind != Token::Kind::kBlank)
        return &tokens_[static_cast<std::size_t>(i)];
    return nullptr;
  }

  /// What `token` is compared with by == or !=; null for none.
  Token* ComparedWith(std::size_t position) {
    for (const int step : {-1, 1}) {
      Token* const comparison = Next(position, step);
      if (comparison == nullptr || comparison->kind != Token::Kind::kComparison) continue;
      return Next(static_cast<std::size_t>(comparison - tokens_.data()), step);
    }
    return nullptr;
  }

 private:
  void Add(Token::Kind kind, std::wstring text) { tokens_.push_back({kind, std::move(text)}); }

  std::vector<Token> tokens_;
};

class Rewriter {
 public:
  explicit Rewriter(DesignTable& table) : table_(table) {}

  std::string Run(const std::string& criterion) {
    const std::size_t body = criterion.find(':');
    if (body == std::string::npos) return criterion;  // refused by those who parse it
    criterion_ = criterion.substr(0, body);
    Tokens tokens(FromUtf8(criterion.substr(body + 1)));
    for (Token& token : tokens.GetAll())
      if (token.kind == Token::Kind::kQuotedName || token.kind == Token::Kind::kName)
        ResolveName(token);
    for (std::size_t i = 0; i < tokens.GetAll().size(); ++i) ResolveWord(tokens, i);
    std::wstring text;
    for (const Token& token : tokens.GetAll())
      text += token.kind == Token::Kind::kString ? L'"' + token.text + L'"' : token.text;
    return criterion_ + ':' + ToUtf8(text);
  }

 private:
  [[noreturn]] void Refuse(const std::string& what) const {
    throw Refusal("criterion " + Quoted(criterion_) + ": " + what);
  }

  std::vector<std::wstring*> AllNames() {
    std::vector<std::wstring*> names;
    for (std::wstring& name : table_.data.inputs) names.push_back(&name);
    for (std::wstring& name : table_.data.responses) names.push_back(&name);
    return names;
  }

  /// Whether elements of vectors reach the column by an index.
  static bool IsElement(const std::wstring& name) {
    return corvath::algorithm::datatypes::SplitIndexedName(name).GetIndex().has_value();
  }

  void ResolveName(Token& token) {
    const bool quoted = token.kind == Token::Kind::kQuotedName;
    token.kind = Token::Kind::kName;
    for (std::wstring* name : AllNames())
      if (*name == token.text && (!quoted || IsElement(*name) || CanBeUsed(*name))) return;
    for (std::wstring* name : AllNames()) {
      if (IsElement(*name) || CanBeUsed(*name)) continue;
      const std::wstring identifier = FromUtf8(IdentifierOf(ToUtf8(*name)));
      if (quoted ? *name != token.text : identifier != token.text) continue;
      Rename(*name, identifier);
      token.text = identifier;
      return;
    }
    if (!quoted) return;  // a criterion, a constant, or nothing: others tell
    // The text before it may have renamed the column.
    for (const auto& [name, column] : table_.columns.GetAll())
      if (!column.title.empty() && FromUtf8(column.title) == token.text) {
        token.text = FromUtf8(name);
        return;
      }
    std::vector<std::string> names;
    for (const std::wstring* name : AllNames()) names.push_back(ToUtf8(*name));
    Refuse("there is no input or response " + Quoted(ToUtf8(token.text)) + "; " +
           NameHint(ToUtf8(token.text), names, "there are"));
  }

  void Rename(std::wstring& name, const std::wstring& identifier) {
    for (const std::wstring* other : AllNames())
      if (*other == identifier)
        Refuse("the column " + Quoted(ToUtf8(name)) + " would be " + ToUtf8(identifier) +
               " in expressions, which is another column; rename one of them");
    const std::string old_name = ToUtf8(name);
    const std::string new_name = ToUtf8(identifier);
    for (std::wstring& discrete : table_.data.discrete)
      if (discrete == name) discrete = identifier;
    table_.columns.Rename(old_name, new_name);
    const auto unit = table_.units.find(old_name);
    if (unit != table_.units.end()) table_.units[new_name] = unit->second;
    table_.notes.push_back(table_.file + ": column " + Quoted(old_name) + " is named " + new_name +
                           " in the project, since the criterion " + Quoted(criterion_) +
                           " uses it");
    name = identifier;
  }

  void ResolveWord(Tokens& tokens, std::size_t position) {
    Token& token = tokens.GetAll()[position];
    if (token.kind != Token::Kind::kString && token.kind != Token::Kind::kName) return;
    const Token* const other = tokens.ComparedWith(position);
    if (other == nullptr || other->kind != Token::Kind::kName) return;
    const TableColumn* const column = table_.columns.Find(ToUtf8(other->text));
    if (column == nullptr || column->words.empty()) return;
    const std::string word = ToUtf8(token.text);
    const auto found = std::find(column->words.begin(), column->words.end(), word);
    if (token.kind == Token::Kind::kName) {
      if (found == column->words.end()) return;
      for (const std::wstring* name : AllNames())
        if (*name == token.text) return;
      Refuse("put the word " + word + " in quotation marks");
    }
    if (found == column->words.end())
      Refuse(Quoted(word) + " is no value of the input " + Quoted(ToUtf8(other->text)) + "; " +
             NameHint(word, column->words, "it takes"));
    token = {Token::Kind::kOther, std::to_wstring(found - column->words.begin())};
  }

  DesignTable& table_;
  std::string criterion_;
};

}  // namespace

bool CanBeUsed(const std::wstring& name) {
  static const CCalculator calculator;
  return corvath::calculator::DeleteBlanks(name) == name &&
         calculator.IsValidIdentifier(name, true);
}

std::string IdentifierOf(const std::string& name) {
  const std::wstring wide = FromUtf8(name);
  if (CanBeUsed(wide)) return name;
  std::wstring identifier;
  for (const wchar_t c : wide) {
    if (IsNameCharacter(c))
      identifier += c;
    else if (!identifier.empty() && identifier.back() != L'_')
      identifier += L'_';
  }
  while (!identifier.empty() && identifier.back() == L'_') identifier.pop_back();
  if (identifier.empty() || IsDigit(identifier[0])) identifier.insert(0, 1, L'_');
  if (!CanBeUsed(identifier)) identifier += L'_';
  return ToUtf8(identifier);
}

std::vector<std::string> UseColumns(const std::vector<std::string>& texts, DesignTable& table) {
  Rewriter rewriter(table);
  std::vector<std::string> rewritten;
  rewritten.reserve(texts.size());
  for (const std::string& text : texts) rewritten.push_back(rewriter.Run(text));
  return rewritten;
}

}  // namespace corvath::study
