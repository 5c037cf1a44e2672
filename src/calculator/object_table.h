#pragma once

#include "variant/value/variant.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace corvath::calculator {

class ParsedText;

/// A name of expression texts and, while `known`, the object that bears it.
struct Object {
  std::wstring name;
  bool known = false;
  std::wstring expression;  ///< empty for a plain value
  math::Value value;        ///< with an expression the value of its last evaluation
  /// The expression's tree; null until it is needed. See Workspace::GetText().
  const ParsedText* text = nullptr;
  /// The constant that the name denotes while it is not known itself; null if there is none.
  const Object* constant = nullptr;
  bool evaluating = false;  ///< its expression is under evaluation

  /// What the name denotes; null if nothing.
  const Object* Resolve() const { return known ? this : constant; }
};

/// State of a name.
enum ObjectState {
  kUnknown = 0,
  kDefined = 1,
  kImmutable = 2  ///< it denotes a constant
};

/// The named objects of one calculator. Every name that a text mentions gets an entry, known or
/// not, whose address is final: a tree holds it in place of the name.
///
/// Constants are entries under "@" and a name in upper case, which no text can write. A name that
/// is not known denotes the constant of its upper case form, so that pi, Pi and PI are @PI.
class ObjectTable {
 public:
  /// Holds the constants.
  ObjectTable();
  ObjectTable(const ObjectTable&) = delete;
  ObjectTable& operator=(const ObjectTable&) = delete;

  /// The entry of a name.
  Object& operator[](std::wstring_view name);
  static ObjectState GetState(const Object& object) {
    return object.known ? kDefined : object.constant ? kImmutable : kUnknown;
  }
  bool IsConstant(std::wstring_view name) const { return FindConstant(name) != nullptr; }

  /// Gives the entry a value and an expression, with its tree if that is known; it must not denote
  /// a constant.
  void Define(Object& object, std::wstring expression, math::Value value,
              const ParsedText* text = nullptr);
  /// Makes all names but the constants unknown.
  void Forget();
  /// Notes the tree of the object's expression.
  void SetText(Object& object, const ParsedText& text);
  /// Drops all trees, and the entries of unknown names, to which they point.
  void DropTexts();
  /// Whether expressions wait for their trees: nobody knows what reading one may do.
  bool HasUnread() const { return num_unread_ > 0; }

 private:
  const Object* FindConstant(std::wstring_view name) const;

  std::unordered_map<std::wstring, Object> objects_;
  std::size_t num_unread_ = 0;  ///< objects with an expression and without its tree
};

}  // namespace corvath::calculator
