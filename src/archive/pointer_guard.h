#pragma once

#include <boost/archive/basic_archive.hpp>
#include <boost/serialization/extended_type_info.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace corvath::archive {

/// Keeps pointers in a damaged archive from doing harm.
///
/// Boost.Serialization takes class ids and object ids of an archive on trust: an id out of range
/// writes beyond a table, an id of another class reinterprets its object, and an object whose
/// loading ends in an exception is leaked. The guard repeats Boost's positional bookkeeping of
/// classes and objects from the outside, refuses what does not fit before Boost sees it, and owns
/// each object behind a pointer until its loading is complete.
///
/// Pointers behind pointers have a limit of depth, so that no chain exhausts the stack.
///
/// All refusals are boost::archive::archive_exception `unregistered_class`.
class PointerGuard {
 public:
  using TypeInfo = boost::serialization::extended_type_info;

  PointerGuard() = default;
  PointerGuard(const PointerGuard&) = delete;
  PointerGuard& operator=(const PointerGuard&) = delete;
  ~PointerGuard();  ///< destroys the objects whose loading did not complete

  /// A class that the archive's tables are about to hold: an object of it is loaded by value, or a
  /// pointer of this (not abstract) static type.
  void NoteClass(const TypeInfo& type) {
    const TypeInfo*& recent =
        recent_[reinterpret_cast<std::uintptr_t>(&type) / 64 % recent_.size()];
    if (recent == &type) return;
    AddClass(type);
    recent = &type;
  }

  /// The next object id belongs to an object that is loaded by value.
  void BeginValue() { pointer_class_.reset(); }

  /// Loading of one pointer of static type `expected`; destroyed at its end.
  class Pointer {
   public:
    /// @param polymorphic  `expected` is: the object may be of a class derived from it
    Pointer(PointerGuard& guard, const TypeInfo& expected, bool polymorphic);
    Pointer(const Pointer&) = delete;
    Pointer& operator=(const Pointer&) = delete;
    ~Pointer();
    /// The object is complete and belongs to the caller.
    void Complete();

   private:
    friend class PointerGuard;
    PointerGuard& guard_;
    Pointer* outer_;
    const TypeInfo& expected_;
    int depth_;  ///< 1 for a pointer that is not behind another one
    bool polymorphic_;
    bool constructs_ = true;  ///< no object of this pointer was constructed yet
    std::size_t num_orphans_;
    std::optional<std::size_t> object_;  ///< index of the object that this load created
  };

  /// What the archive reads in front of an object. Outside the load of a pointer none is refused.
  /// @throws boost::archive::archive_exception  an id or a name that the pointer cannot hold
  void OnClassId(int id);
  void OnClassName(const char* name);
  void OnObjectId(std::size_t id);
  /// An object of the pointer in work was constructed at `object`; `destroy` deletes it.
  void OnConstructed(void* object, void (*destroy)(void*)) noexcept;

 private:
  struct Orphan {
    void* object;
    void (*destroy)(void*);
  };
  struct Object {
    int class_id;  ///< of the pointer that created it, kByValue if none did
    bool complete;
  };
  static constexpr int kByValue = -2;

  void AddClass(const TypeInfo& type);
  bool CanHold(const TypeInfo& type) const;

  std::vector<const TypeInfo*> classes_;          ///< by class id
  std::unordered_map<const TypeInfo*, int> ids_;  ///< of classes_
  std::array<const TypeInfo*, 64> recent_{};      ///< some of classes_, by a hash of the address
  std::vector<Object> objects_;                   ///< by object id
  std::vector<Orphan> orphans_;
  std::optional<int> pointer_class_;  ///< class id read, object id not yet
  Pointer* pointer_ = nullptr;        ///< innermost in work
};

}  // namespace corvath::archive
