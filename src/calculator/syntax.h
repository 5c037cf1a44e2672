#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::calculator {

/// Rules of the grammar of expression texts; a node of a tree carries the number of its rule.
enum class Rule : std::uint8_t {
  kExpression = 1,
  kConstant = 2,
  kFunction = 3,
  kIdent = 4,
  kParentheses = 5,
  kOperand = 6,
  kUnary = 7,
  kLogical = 8,     ///< && ||
  kComparison = 9,  ///< <= >= < > == !=
  kSum = 10,        ///< + -
  kProduct = 11,    ///< * / %
  kPower = 12,      ///< ^ **
  kIndex = 13,
  kObject = 14,
  kVector = 15,
  kSlice = 16,
  kMatrix = 17,
  kAssign = 18,
  kString = 19,
  kAssignMacro = 20,
  kMacro = 21,
  kIf = 22,
  kSwitch = 23
};

/// Name of a rule, "binary greedy[0] operation" for example; empty for kParentheses and kSlice.
const wchar_t* GetRuleName(Rule rule);

/// One node: a range of the text. Which text a rule's node covers, and what its children are:
///
///  - kFunction, kIdent, kObject: the name; kConstant: the number; children of a function are its
///    arguments
///  - kUnary and the binary rules: the operator, with one or two operands as children; where the
///    text has no operator, the rule's whole text with one child. Chains nest to the left.
///  - kIndex, kSlice: the rule's text; the operand, then what stands in the brackets, with a child
///    of text "," or ":" for each separator
///  - kAssign: the targets, then the expression; kAssignMacro: name, arguments, "=", expression
///  - kMacro: name, arguments; kIf: condition and branches
///  - kSwitch: selector, value and result of each case, "#default" as written, its result
///  - kString: the text with its quotes; one child without them
///  - all others: the rule's text and their parts
///
/// Separators that stay in the tree carry the number of the rule around them. Empty parentheses of
/// a function or macro give one child of empty text, with the number of the rule around it.
struct Node {
  std::uint32_t first;     ///< offset of the first character
  std::uint32_t last;      ///< offset behind the last one
  std::uint32_t children;  ///< position of the first child's number in the pool
  std::uint32_t num_children;
  Rule rule;
};

/// The tree of one text. Nodes are numbered; a child has a smaller number than its parent.
class SyntaxTree {
 public:
  using Index = std::uint32_t;

  const Node& operator[](Index node) const { return nodes_[node]; }
  Index Child(Index node, std::size_t i) const { return pool_[nodes_[node].children + i]; }
  std::size_t NumChildren(Index node) const { return nodes_[node].num_children; }
  /// The text that the node covers, a part of `text`, the one that was parsed.
  std::wstring_view Text(Index node, std::wstring_view text) const {
    return text.substr(nodes_[node].first, nodes_[node].last - nodes_[node].first);
  }
  Index GetRoot() const { return root_; }
  std::size_t size() const { return nodes_.size(); }

  /// Appends a node.
  Index Add(Rule rule, std::size_t first, std::size_t last, const Index* children,
            std::size_t num_children);
  /// Drops all nodes that the root does not reach (those of abandoned attempts).
  void SetRoot(Index root);

 private:
  std::vector<Node> nodes_;
  std::vector<Index> pool_;
  Index root_ = 0;
};

}  // namespace corvath::calculator
