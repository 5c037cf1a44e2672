#pragma once

#include "archive/annotation.h"
#include "archive/archive_flags.h"
#include "archive/integer_code.h"
#include "archive/pointer_guard.h"
#include "archive/serialization.h"

#include <boost/archive/basic_binary_iprimitive.hpp>
#include <boost/archive/detail/common_iarchive.hpp>
#include <boost/archive/detail/register_archive.hpp>
#include <boost/serialization/collection_size_type.hpp>
#include <boost/serialization/item_version_type.hpp>
#include <boost/serialization/library_version_type.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/string.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/uuid/uuid.hpp>

#include <istream>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace corvath {

/// What the portable archive itself finds wrong, beside Boost's own archive_exception codes.
class portable_binary_iarchive_exception : public boost::archive::archive_exception {
 public:
  enum portable_code { integer_out_of_range = 0, annotation_mismatch = 1 };

  explicit portable_binary_iarchive_exception(portable_code what_is_wrong)
      : archive_exception(other_exception), portable_code_(what_is_wrong) {}
  const char* what() const noexcept override;

 private:
  portable_code portable_code_;
};

/// Reads objects in the byte format of project files, format versions 0 to 4.
///
/// Every failure is an exception derived from boost::archive::archive_exception: a stream that ends
/// (`input_stream_error`), a wrong signature or format version (`invalid_signature`), a newer
/// library version (`unsupported_version`), an integer that its target cannot hold or a mismatch of
/// annotations (portable_binary_iarchive_exception). After an exception the archive is of no
/// further use. Memory stays within a small multiple of the stream's length.
class portable_binary_iarchive
    : public boost::archive::basic_binary_iprimitive<portable_binary_iarchive, char,
                                                     std::char_traits<char>>,
      public boost::archive::detail::common_iarchive<portable_binary_iarchive>,
      public portable_binary_archive_annotate_control {
 public:
  /// Reads the header at once.
  /// @param stream  binary; must outlive the archive
  /// @param flags   archive/archive_flags.h, together with Boost's own
  explicit portable_binary_iarchive(std::istream& stream, unsigned int flags = 0);
  ~portable_binary_iarchive() override;

  void DisableAnnotations() override { ++suspended_; }
  void EnableAnnotations() override { --suspended_; }

  /// Upper bound of the bytes that the stream still holds; SIZE_MAX if it cannot tell.
  std::size_t Remaining();

  /// Refuses a count of values, each of at least `min_bytes`, that the stream cannot hold.
  void CheckCount(std::uint64_t count, std::size_t min_bytes = 1);

  /// Bytes as they stand. Called by Boost, too.
  void load_binary(void* address, std::size_t size);

  /// Constructs the object behind the pointer in work in memory that Boost has allocated for it. What
  /// is constructed belongs to the archive until its loading is complete; what is not is freed.
  template <class T, class... Arguments>
  void Construct(T* object, Arguments&&... arguments) {
    struct Free {
      void operator()(void* memory) const { ::operator delete(memory); }
    };
    std::unique_ptr<void, Free> memory(object);
    ::new (memory.get()) T(std::forward<Arguments>(arguments)...);
    static_cast<void>(memory.release());
    guard_.OnConstructed(object, [](void* p) { delete static_cast<T*>(p); });
  }

  /// The owner of an object whose pointer was read: the same one for all pointers to it. An object that
  /// has no owner for want of memory is destroyed.
  template <class T>
  boost::shared_ptr<T> Share(T* object) {
    if (object == nullptr) return {};
    const void* whole = object;
    if constexpr (std::is_polymorphic_v<T>) whole = dynamic_cast<const void*>(object);
    const auto known = shared_.find(whole);
    if (known != shared_.end()) return boost::shared_ptr<T>(known->second, object);
    boost::shared_ptr<T> owner(object);
    shared_.emplace(whole, owner);
    return owner;
  }

  // Primitive values, called by Boost.Serialization.
  void load(bool& value);
  void load(double& value) { load_binary(&value, sizeof value); }
  void load(std::string& value);
  void load(std::wstring& value);
  void load(boost::uuids::uuid& value) { load_binary(value.data, sizeof value.data); }
  void load(boost::serialization::collection_size_type& value);
  void load(boost::serialization::item_version_type& value);
  void load(boost::serialization::library_version_type& value);
  template <class Integer>
  std::enable_if_t<std::is_integral_v<Integer>> load(Integer& value) {
    if (!archive::Narrow(ReadInteger(), value))
      throw portable_binary_iarchive_exception(
          portable_binary_iarchive_exception::integer_out_of_range);
  }

 private:
  friend class boost::archive::detail::interface_iarchive<portable_binary_iarchive>;
  friend class boost::archive::load_access;
  using Base = boost::archive::detail::common_iarchive<portable_binary_iarchive>;

  template <class T>
  using TypeInfoOf = boost::serialization::singleton<
      typename boost::serialization::type_info_implementation<T>::type>;

  /// Whether Boost keeps a class record for T, so that T takes a class id.
  template <class T>
  static constexpr bool HasClassRecord() {
    using boost::serialization::implementation_level;
    using boost::serialization::tracking_level;
    if constexpr (std::is_enum_v<T> || std::is_array_v<T>)
      return false;
    else if constexpr (implementation_level<T>::value == boost::serialization::primitive_type)
      return false;
    else
      return implementation_level<T>::value >= boost::serialization::object_class_info ||
             tracking_level<T>::value != boost::serialization::track_never;
  }

  template <class T>
  void load_override(T& t) {
    using Plain = std::remove_cv_t<T>;
    if constexpr (std::is_pointer_v<Plain>) {
      LoadPointer(t);
    } else {
      if constexpr (HasClassRecord<Plain>())
        guard_.NoteClass(TypeInfoOf<Plain>::get_const_instance());
      guard_.BeginValue();
      if constexpr (archive::IsPlainValue<Plain>::value)
        LoadPlainValue(t);
      else
        Base::load_override(t);
    }
  }

  /// What the archive tells in front of the first object of a class.
  struct PlainClass {
    bool is_known = false;
    bool is_tracked = false;
    unsigned int version = 0;
  };

  /// The first object goes through Boost, which may need the class's place in its tables.
  template <class T>
  void LoadPlainValue(T& t) {
    static const std::size_t index = TakePlainIndex();
    if (index >= plain_classes_.size()) plain_classes_.resize(index + 1);
    if (const PlainClass& known = plain_classes_[index]; known.is_known)
      return boost::serialization::serialize_adl(*this, t, known.version);
    PlainClass first;
    first.is_tracked = true;  // unless told otherwise
    constexpr bool has_version = boost::serialization::implementation_level<T>::value >=
                                 boost::serialization::object_class_info;
    if constexpr (has_version)
      opening_ = &first;
    else
      first.is_tracked = false;
    Base::load_override(t);
    opening_ = nullptr;
    first.is_known = !first.is_tracked;
    plain_classes_[index] = first;
  }
  static std::size_t TakePlainIndex();

  template <class T>
  void load_override(const boost::serialization::nvp<T>& t) {
    ReadAnnotation(t.name());
    load_override(t.value());
  }
  void load_override(boost::archive::class_id_optional_type&) {}  // not stored
  void load_override(boost::archive::class_id_type& id);
  void load_override(boost::archive::class_name_type& name);
  void load_override(boost::archive::object_id_type& id);
  void load_override(boost::archive::tracking_type& tracking);
  void load_override(boost::archive::version_type& version);

  template <class T>
  void LoadPointer(T*& t) {
    using Plain = std::remove_cv_t<T>;
    const auto& type = TypeInfoOf<Plain>::get_const_instance();
    if constexpr (!std::is_abstract_v<Plain>) guard_.NoteClass(type);
    archive::PointerGuard::Pointer pointer(guard_, type, std::is_polymorphic_v<Plain>);
    Base::load_override(t);
    pointer.Complete();
  }

  archive::WideInteger ReadInteger();
  std::uint16_t ReadWord();
  void ReadHeader();
  void ReadAnnotation(const char* name);
  void OnMismatch(const std::string& message) const;

  archive::PointerGuard guard_;
  std::streamoff end_ = -1;  ///< of the stream, -1 if it cannot seek
  unsigned int suspended_ = 0;
  archive::AnnotationForm form_ = archive::AnnotationForm::kNone;
  bool throw_on_mismatch_;
  bool silent_on_mismatch_;
  bool unsigned_class_ids_ = false;  ///< format versions 0 to 2
  archive::AnnotationNames names_;
  std::vector<PlainClass> plain_classes_;  ///< by a number that each class has in this process
  PlainClass* opening_ = nullptr;          ///< whose first object is about to be loaded
  std::unordered_map<const void*, boost::shared_ptr<void>>
      shared_;  ///< by the address of the whole
};

/// Constructs the object behind a pointer, and makes sure that it does not leak if its loading
/// fails. Boost finds this overload by the archive's namespace. A class without default constructor
/// overloads it for this archive and calls Construct itself.
template <class T>
void load_construct_data(portable_binary_iarchive& ar, T* object, const unsigned int) {
  ar.Construct(object);
}

/// In place of Boost's own, which loses the object if memory runs out before it has an owner.
template <class T>
void load(portable_binary_iarchive& ar, boost::shared_ptr<T>& pointer, const unsigned int) {
  T* object = nullptr;
  ar >> boost::serialization::make_nvp("px", object);
  pointer = ar.Share(object);
}

}  // namespace corvath

extern template class boost::archive::basic_binary_iprimitive<corvath::portable_binary_iarchive,
                                                              char, std::char_traits<char>>;
BOOST_SERIALIZATION_REGISTER_ARCHIVE(corvath::portable_binary_iarchive)
