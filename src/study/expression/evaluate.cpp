#include "study/expression/evaluate.h"

#include "calculator/calculator.h"
#include "calculator/macro_file.h"
#include "foundation/exception.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"
#include "study/describe/json_text.h"
#include "study/refusal.h"
#include "study/table/csv_cell.h"

#include <cctype>
#include <new>

namespace corvath::study {
namespace {

using math::Value;
using utils::FromUtf8;
using utils::ToUtf8;

void Define(CCalculator& calculator, const Definition& definition) {
  const std::wstring name = FromUtf8(definition.name);
  if (const auto* const text = std::get_if<std::string>(&definition.meaning)) {
    const std::wstring expression = FromUtf8(*text);
    calculator.GetDependencies(expression);  // is it an expression?
    calculator.SetObject(name, expression, {});
  } else {
    calculator.SetObject(name, {}, std::get<Value>(definition.meaning));
  }
}

[[noreturn]] void RefuseMeaning(const std::string& name) {
  throw Refusal(
      "definitions: " + Quoted(name) +
      ": a number, true or false, an array of numbers, an array of arrays of equally many "
      "numbers, or a text with an expression is wanted");
}

Value::Complex NumberOf(const std::string& name, const Json::Value& json) {
  if (!json.isNumeric()) RefuseMeaning(name);
  return json.asDouble();
}

Value VectorOf(const std::string& name, const Json::Value& json) {
  Value::Vector vector(json.size());
  for (Json::ArrayIndex i = 0; i < json.size(); ++i) vector(i) = NumberOf(name, json[i]);
  return Value(std::move(vector));
}

Value MatrixOf(const std::string& name, const Json::Value& json) {
  const Json::ArrayIndex columns = json[0].size();
  Value::Matrix matrix(json.size(), columns);
  for (Json::ArrayIndex i = 0; i < json.size(); ++i) {
    if (!json[i].isArray() || json[i].size() != columns || columns == 0) RefuseMeaning(name);
    for (Json::ArrayIndex k = 0; k < columns; ++k) matrix(i, k) = NumberOf(name, json[i][k]);
  }
  return Value(std::move(matrix));
}

/// Real and, where there are such, imaginary parts.
void AddNumbers(Result& result, bool is_complex, std::size_t rows, std::size_t columns,
                const std::vector<Value::Complex>& numbers) {
  NamedArray& real = result.Add("value", rows, columns);
  for (std::size_t i = 0; i < numbers.size(); ++i) real.values[i] = numbers[i].real();
  if (!is_complex) return;
  NamedArray& imaginary = result.Add("imaginary", rows, columns);
  for (std::size_t i = 0; i < numbers.size(); ++i) imaginary.values[i] = numbers[i].imag();
}

/// The rows of an array as JSON: a vector gives its numbers.
Json::Value NumbersDocument(const NamedArray& array, bool is_vector) {
  Json::Value rows(Json::arrayValue);
  for (std::size_t i = 0; i < array.rows; ++i) {
    Json::Value row(Json::arrayValue);
    for (std::size_t k = 0; k < array.columns; ++k)
      row.append(JsonNumber(array.values[i * array.columns + k]));
    rows.append(is_vector ? row[0] : row);
  }
  return rows;
}

}  // namespace

Value Evaluate(const std::string& expression, const std::vector<Definition>& definitions) {
  try {
    CCalculator calculator;
    calculator.AddMacros(calculator::LoadMacros());
    for (const Definition& definition : definitions) Define(calculator, definition);
    return calculator.Evaluate(FromUtf8(expression));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw Refusal(ToUtf8(utils::MessageOf(error)));
  }
}

std::string ValueText(const Value& value) {
  utils::WideTextStream text;
  text << value;
  std::string result = ToUtf8(text.str());
  if (result.empty() || result.back() != '\n') result += '\n';
  return result;
}

Result ValueResult(const Value& value) {
  Result result;
  std::string kind = value.GetKindName();
  for (char& c : kind) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  result.document["kind"] = kind;
  result.document["text"] = ValueText(value);
  if (value.IsBoolean()) {
    result.document["value"] = value.GetBoolean();
    result.Add("value", 1, 1).values[0] = value.GetBoolean() ? 1.0 : 0.0;
    return result;
  }
  const bool is_complex = value.IsComplex();
  if (value.IsScalar()) {
    AddNumbers(result, is_complex, 1, 1, {value.GetScalar()});
    if (!is_complex) result.document["value"] = JsonNumber(value.GetScalar().real());
    return result;
  }
  if (value.IsVector()) {
    const auto& vector = value.GetVector();
    AddNumbers(result, is_complex, vector.size(), 1, {vector.begin(), vector.end()});
  } else if (value.IsMatrix() || value.HasTimeline()) {
    const auto& matrix = value.GetMatrix();
    AddNumbers(result, is_complex, matrix.size1(), matrix.size2(),
               {matrix.data().begin(), matrix.data().end()});
  }
  if (value.HasTimeline()) {
    const auto& timeline = value.GetVector();
    NamedArray& times = result.Add("timeline", timeline.size(), 1);
    for (std::size_t i = 0; i < timeline.size(); ++i) times.values[i] = timeline(i).real();
  } else if (!result.arrays.empty() && !is_complex) {
    result.document["value"] = NumbersDocument(result.arrays.front(), value.IsVector());
  }
  return result;
}

std::vector<Definition> DefinitionsOf(const Json::Value& object) {
  if (!object.isObject()) throw Refusal("definitions: a JSON object is wanted");
  std::vector<Definition> definitions;
  for (const std::string& name : object.getMemberNames()) {
    const Json::Value& json = object[name];
    if (json.isString())
      definitions.push_back({name, json.asString()});
    else if (json.isBool())
      definitions.push_back({name, Value(json.asBool())});
    else if (json.isArray() && !json.empty())
      definitions.push_back(
          {name, json[0].isArray() ? MatrixOf(name, json) : VectorOf(name, json)});
    else
      definitions.push_back({name, Value(NumberOf(name, json))});
  }
  return definitions;
}

}  // namespace corvath::study
