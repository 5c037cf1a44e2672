#include "calculator/calculator.h"

#include "calculator/dependencies.h"
#include "calculator/evaluator.h"
#include "calculator/parser.h"
#include "calculator/workspace.h"

#include <random>
#include <utility>

namespace calculator = corvath::calculator;
using calculator::Object;
using calculator::ObjectTable;
using calculator::ParsedText;
using calculator::Rule;

boost::random::mt19937& calculator::Workspace::GetGenerator() {
  if (!generator_) {
    std::random_device device;
    generator_.emplace(device());
  }
  return *generator_;
}

void calculator::Workspace::CountSteps(std::uint64_t count) {
  steps += count;
  if (steps > max_steps)
    throw CCalculatorException(L"Evaluation of more than " + std::to_wstring(max_steps) +
                               L" steps");
}

const ParsedText& calculator::Workspace::GetText(Object& object) {
  if (!object.text) objects.SetText(object, texts.Parse(object.expression));
  return *object.text;
}

void calculator::Workspace::MakeRoom() {
  if (depth > 0 || !texts.IsHalfFull()) return;
  macros.ForgetExpansions();
  objects.DropTexts();
  texts.Clear();
}

CCalculator::CCalculator() : workspace_(std::make_unique<calculator::Workspace>()) {}

CCalculator::~CCalculator() = default;

CCalculator::Variant CCalculator::Evaluate(const std::wstring& text) {
  workspace_->MakeRoom();
  Variant result;
  calculator::Evaluator(*workspace_).Evaluate(workspace_->texts.Parse(text), result);
  return result;
}

void CCalculator::SetObject(const std::wstring& name, const std::wstring& expression,
                            const Variant& value) {
  Object& object = workspace_->objects[name];
  switch (ObjectTable::GetState(object)) {
    case calculator::kImmutable:
      throw CCalculatorException(L"Can't overwrite immutable object \"" + name + L"\"");
    case calculator::kUnknown:
      if (!IsValidIdentifier(name, true))
        throw CCalculatorException(L"Invalid identifier: \"" + name + L"\"");
      break;
    case calculator::kDefined:
      if (name.front() == L'@')  // a constant by its own name
        throw CCalculatorException(L"Can't overwrite immutable object \"" + name + L"\"");
      break;
  }
  workspace_->objects.Define(object, expression, value);
}

std::optional<CCalculator::ObjectRecord> CCalculator::FindObject(const std::wstring& name) const {
  const Object* const object = workspace_->objects[name].Resolve();
  if (!object) return std::nullopt;
  return ObjectRecord{object->name, object->expression, object->value};
}

CCalculator::ObjectRecord CCalculator::GetObject(const std::wstring& name) const {
  auto record = FindObject(name);
  if (!record)
    throw CCalculatorObjectUnknownException(L"Object \"" + name + L"\" not known.", name);
  return *std::move(record);
}

calculator::ObjectState CCalculator::GetObjectState(const std::wstring& name) const {
  return ObjectTable::GetState(workspace_->objects[name]);
}

std::set<std::wstring> CCalculator::GetDependencies(const std::wstring& text) {
  workspace_->MakeRoom();
  return calculator::GetDependencies(*workspace_, workspace_->texts.Parse(text));
}

bool CCalculator::HasCircularDependency(const std::wstring& text) {
  workspace_->MakeRoom();
  return calculator::HasCircularDependency(*workspace_, workspace_->texts.Parse(text));
}

bool CCalculator::IsValidIdentifier(const std::wstring& name, bool check_constants) const {
  if (check_constants && workspace_->objects.IsConstant(name)) return false;
  try {
    // A tree of its own: a name is no text worth keeping.
    const std::wstring text = calculator::DeleteBlanks(name);
    if (text.size() > calculator::kMaxTextLength) return false;
    const auto result = calculator::Parse(text);
    if (!result.full) return false;
    auto node = result.tree.GetRoot();
    while (result.tree.NumChildren(node) == 1) node = result.tree.Child(node, 0);
    return result.tree[node].rule == Rule::kObject;
  } catch (const CCalculatorException&) {
    return false;
  }
}

void CCalculator::AddMacros(const CalculatorTypeTraits::Macros& macros) {
  workspace_->macros.Add(macros);
}
