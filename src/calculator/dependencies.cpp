#include "calculator/dependencies.h"

#include "calculator/calculator_exception.h"
#include "calculator/parser.h"
#include "foundation/stack.h"

#include <vector>

namespace corvath::calculator {

namespace {

/// One walk through a text and the expressions of the objects that it meets.
class Walk {
 public:
  enum class Mode { kCollect, kLookForCycles };

  Walk(Workspace& workspace, Mode mode) : workspace_(workspace), mode_(mode) {}

  /// Adds what `node` and its children depend on to `found`.
  /// @param path  the objects whose expressions are being walked
  void Run(const ParsedText& text, ParsedText::Index node, std::set<std::wstring>& path,
           std::set<std::wstring>& found) {
    if (++depth_ > kMaxDepth || utils::IsStackLow()) throw CCalculatorException(kNestedTooDeep);
    std::vector<ParsedText::Index> open{node};
    const auto open_children = [&](ParsedText::Index parent, std::size_t first) {
      for (std::size_t i = text.NumChildren(parent); i-- > first;)
        open.push_back(text.Child(parent, i));
    };
    while (!open.empty()) {
      const ParsedText::Index current = open.back();
      open.pop_back();
      if (++steps_ > workspace_.max_steps) throw CCalculatorException(L"Too many dependencies");
      if (text.GetRule(current) == Rule::kObject)
        Visit(text.GetObject(current), path, found);
      else if (text.GetRule(current) == Rule::kAssign)
        VisitAssignment(text, current, found);
      else
        open_children(current, 0);
    }
    --depth_;
  }

 private:
  /// The parts of an assignment know only its first target as the object under way.
  void VisitAssignment(const ParsedText& text, ParsedText::Index node,
                       std::set<std::wstring>& found) {
    std::set<std::wstring> path{std::wstring(text.GetText(text.Child(node, 0)))};
    std::set<std::wstring> inner;
    for (std::size_t i = 1; i < text.NumChildren(node); ++i)
      Run(text, text.Child(node, i), path, inner);
    found.merge(inner);
  }

  void Visit(Object& object, std::set<std::wstring>& path, std::set<std::wstring>& found) {
    if (path.count(object.name) > 0)
      throw CCircularDependencyException(L"object " + object.name +
                                         L" depends on expression dependent on " + object.name);
    switch (ObjectTable::GetState(object)) {
      case kUnknown:
        if (mode_ == Mode::kLookForCycles) found.insert(object.name);
        return;
      case kImmutable:
        if (mode_ == Mode::kCollect) found.insert(object.name);
        return;
      case kDefined:
        break;
    }
    if (mode_ == Mode::kLookForCycles && object.expression.empty()) return;
    if (!found.insert(object.name).second || object.expression.empty()) return;
    const ParsedText& text = workspace_.GetText(object);
    path.insert(object.name);
    Run(text, text.GetRoot(), path, found);
    path.erase(object.name);
  }

  Workspace& workspace_;
  const Mode mode_;
  int depth_ = 0;
  std::uint64_t steps_ = 0;
};

std::set<std::wstring> Find(Workspace& workspace, const ParsedText& text, Walk::Mode mode) {
  std::set<std::wstring> path;
  std::set<std::wstring> found;
  Walk(workspace, mode).Run(text, text.GetRoot(), path, found);
  return found;
}

}  // namespace

std::set<std::wstring> GetDependencies(Workspace& workspace, const ParsedText& text) {
  return Find(workspace, text, Walk::Mode::kCollect);
}

bool HasCircularDependency(Workspace& workspace, const ParsedText& text) {
  try {
    Find(workspace, text, Walk::Mode::kLookForCycles);
    return false;
  } catch (const CCircularDependencyException&) {
    return true;
  }
}

std::set<const Object*> FindReads(Workspace& workspace, const ParsedText& text) {
  std::set<const Object*> reads;
  std::vector<bool> is_target(text.GetRoot() + 1);
  for (ParsedText::Index node = text.GetRoot() + 1; node-- > 0;) {  // parents first
    if (text.GetRule(node) == Rule::kAssign)
      for (std::size_t i = 0; i + 1 < text.NumChildren(node); ++i)
        is_target[text.Child(node, i)] = true;
    if (text.GetRule(node) == Rule::kObject && !is_target[node])
      reads.insert(&text.GetObject(node));
  }
  if (text.CallsMacros())
    for (const std::wstring& name : workspace.macros.FindReach(text).objects)
      reads.insert(&workspace.objects[name]);
  return reads;
}

}  // namespace corvath::calculator
