#include "archive/pointer_guard.h"

#include "archive/portable_iarchive.h"
#include "foundation/stack.h"

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/detail/archive_serializer_map.hpp>
#include <boost/archive/detail/basic_serializer.hpp>
#include <boost/serialization/void_cast.hpp>

namespace corvath::archive {
namespace {

/// Far above what any project nests (a handful of levels; identifiers of designs a few more).
constexpr int kMaxDepth = 1000;

[[noreturn]] void Refuse() {
  using boost::archive::archive_exception;
  throw archive_exception(archive_exception::unregistered_class);
}

/// The record of this library's class of the same type; null if it is abstract or never behind a
/// pointer. The registry of Boost's shared library, which also knows the classes of a second copy
/// of this library in the process, may have given that copy's record.
const PointerGuard::TypeInfo* FindRecord(const PointerGuard::TypeInfo& type) {
  using Serializers = boost::archive::detail::archive_serializer_map<portable_binary_iarchive>;
  const auto* const serializer = Serializers::find(type);
  return serializer == nullptr ? nullptr : &serializer->get_eti();
}

}  // namespace

PointerGuard::~PointerGuard() {
  for (; !orphans_.empty(); orphans_.pop_back()) orphans_.back().destroy(orphans_.back().object);
}

void PointerGuard::AddClass(const TypeInfo& type) {
  if (ids_.emplace(&type, static_cast<int>(classes_.size())).second) classes_.push_back(&type);
}

bool PointerGuard::CanHold(const TypeInfo& type) const {
  if (FindRecord(type) == nullptr) return false;
  if (type == pointer_->expected_) return true;
  // Whether the cast exists is asked with the address of a buffer: it is computed, not followed.
  alignas(std::max_align_t) static char object[64];
  return boost::serialization::void_upcast(type, pointer_->expected_, object) != nullptr;
}

void PointerGuard::OnClassId(int id) {
  constexpr int kNull = -1;
  if (pointer_ == nullptr) return;
  const int num_classes = static_cast<int>(classes_.size());
  if (id == kNull) return;
  if (id < 0 || id > num_classes) Refuse();
  if (id == num_classes) {
    // A new class. Its name follows; without one it could only be the static type, known already.
    if (!pointer_->polymorphic_) Refuse();
  } else if (!CanHold(*classes_[static_cast<std::size_t>(id)])) {
    Refuse();
  }
  pointer_class_ = id;
}

void PointerGuard::OnClassName(const char* name) {
  if (pointer_ == nullptr) return;
  const TypeInfo* type = TypeInfo::find(name);
  if (type != nullptr) type = FindRecord(*type);
  if (type == nullptr || ids_.count(type) != 0 || !CanHold(*type)) Refuse();
  NoteClass(*type);
}

void PointerGuard::OnObjectId(std::size_t id) {
  if (id < objects_.size()) {  // a reference to an object read before
    const Object& object = objects_[id];
    if (pointer_class_ && (object.class_id != *pointer_class_ || !object.complete)) Refuse();
  } else if (pointer_class_) {
    pointer_->object_ = objects_.size();
    objects_.push_back({*pointer_class_, false});
  } else {
    objects_.push_back({kByValue, true});
  }
  pointer_class_.reset();
}

void PointerGuard::OnConstructed(void* object, void (*destroy)(void*)) noexcept {
  if (pointer_ == nullptr || !pointer_->constructs_) return;
  pointer_->constructs_ = false;
  orphans_.push_back({object, destroy});
}

PointerGuard::Pointer::Pointer(PointerGuard& guard, const TypeInfo& expected, bool polymorphic)
    : guard_(guard),
      outer_(guard.pointer_),
      expected_(expected),
      depth_(outer_ == nullptr ? 1 : outer_->depth_ + 1),
      polymorphic_(polymorphic),
      num_orphans_(guard.orphans_.size()) {
  if (depth_ > kMaxDepth || utils::IsStackLow()) Refuse();
  // So that OnConstructed cannot fail: the object would have no owner.
  if (num_orphans_ == guard_.orphans_.capacity()) guard_.orphans_.reserve(2 * num_orphans_ + 8);
  guard_.pointer_ = this;
}

PointerGuard::Pointer::~Pointer() {
  guard_.pointer_ = outer_;
  guard_.pointer_class_.reset();
}

void PointerGuard::Pointer::Complete() {
  guard_.orphans_.resize(num_orphans_);
  if (object_) guard_.objects_[*object_].complete = true;
}

}  // namespace corvath::archive
