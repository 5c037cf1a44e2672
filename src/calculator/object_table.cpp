#include "calculator/object_table.h"

#include "calculator/constants.h"

#include <iterator>
#include <utility>

namespace corvath::calculator {

namespace {

/// The name of a constant, whose letters are all of ASCII: no other letter needs a capital.
std::wstring ConstantName(std::wstring_view name) {
  std::wstring result = L"@";
  for (const wchar_t c : name) result += c >= L'a' && c <= L'z' ? c - (L'a' - L'A') : c;
  return result;
}

bool IsUnread(const Object& object) {
  return !object.expression.empty() && object.text == nullptr;
}

}  // namespace

ObjectTable::ObjectTable() {
  ForEachConstant([this](Constant constant) {
    Object& object = objects_[std::wstring(L"@") + constant.name];
    object.name = std::wstring(L"@") + constant.name;
    object.known = true;
    object.value = std::move(constant.value);
  });
}

const Object* ObjectTable::FindConstant(std::wstring_view name) const {
  const auto found = objects_.find(ConstantName(name));
  return found != objects_.end() && found->second.known ? &found->second : nullptr;
}

Object& ObjectTable::operator[](std::wstring_view name) {
  const auto [entry, is_new] = objects_.try_emplace(std::wstring(name));
  Object& object = entry->second;
  if (is_new) {
    object.name = name;
    object.constant = FindConstant(name);
  }
  return object;
}

void ObjectTable::Define(Object& object, std::wstring expression, math::Value value,
                         const ParsedText* text) {
  if (IsUnread(object)) --num_unread_;
  object.known = true;
  object.evaluating = false;
  object.text = text;
  object.expression = std::move(expression);
  object.value = std::move(value);
  if (IsUnread(object)) ++num_unread_;
}

void ObjectTable::SetText(Object& object, const ParsedText& text) {
  if (IsUnread(object)) --num_unread_;
  object.text = &text;
}

void ObjectTable::DropTexts() {
  num_unread_ = 0;
  for (auto entry = objects_.begin(); entry != objects_.end();) {
    Object& object = entry->second;
    object.text = nullptr;
    if (IsUnread(object)) ++num_unread_;
    entry = object.known ? std::next(entry) : objects_.erase(entry);
  }
}

void ObjectTable::Forget() {
  num_unread_ = 0;
  for (auto& entry : objects_) {
    Object& object = entry.second;
    if (!object.known || object.name.front() == L'@') continue;
    object.known = false;
    object.evaluating = false;
    object.text = nullptr;
    object.expression.clear();
    object.value = math::Value();
  }
}

}  // namespace corvath::calculator
