#pragma once

#include "archive/annotation.h"
#include "archive/archive_flags.h"

#include <boost/archive/basic_binary_oprimitive.hpp>
#include <boost/archive/detail/common_oarchive.hpp>
#include <boost/archive/detail/register_archive.hpp>
#include <boost/serialization/collection_size_type.hpp>
#include <boost/serialization/item_version_type.hpp>
#include <boost/serialization/library_version_type.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/string.hpp>
#include <boost/uuid/uuid.hpp>

#include <ostream>
#include <string>
#include <type_traits>

namespace corvath {

/// Writes objects in the byte format of project files, format version 4: the same bytes on every
/// machine. A short write is boost::archive::archive_exception `output_stream_error`; wide text
/// that is no Unicode is std::domain_error.
class portable_binary_oarchive
    : public boost::archive::basic_binary_oprimitive<portable_binary_oarchive, char,
                                                     std::char_traits<char>>,
      public boost::archive::detail::common_oarchive<portable_binary_oarchive>,
      public portable_binary_archive_annotate_control {
 public:
  /// Writes the header at once.
  /// @param stream  binary; must outlive the archive
  /// @param flags   archive/archive_flags.h, together with Boost's own
  explicit portable_binary_oarchive(std::ostream& stream, unsigned int flags = 0);
  ~portable_binary_oarchive() override;

  void DisableAnnotations() override { ++suspended_; }
  void EnableAnnotations() override { --suspended_; }

  // Primitive values, called by Boost.Serialization.
  void save(bool value) { WriteUnsigned(value ? 1 : 0); }
  void save(double value) { save_binary(&value, sizeof value); }
  void save(const std::string& value);
  void save(const std::wstring& value);
  void save(const boost::uuids::uuid& value) { save_binary(value.data, sizeof value.data); }
  void save(const boost::serialization::collection_size_type& value) {
    WriteUnsigned(static_cast<std::size_t>(value));
  }
  void save(const boost::serialization::item_version_type& value) {
    WriteUnsigned(static_cast<unsigned int>(value));
  }
  void save(const boost::serialization::library_version_type& value) {
    WriteUnsigned(static_cast<unsigned int>(value));
  }
  template <class Integer>
  std::enable_if_t<std::is_integral_v<Integer>> save(Integer value) {
    if constexpr (std::is_unsigned_v<Integer>)
      WriteUnsigned(value);
    else
      WriteSigned(value);
  }

 private:
  friend class boost::archive::detail::interface_oarchive<portable_binary_oarchive>;
  friend class boost::archive::save_access;
  using Base = boost::archive::detail::common_oarchive<portable_binary_oarchive>;

  template <class T>
  void save_override(const T& t) {
    Base::save_override(t);
  }
  template <class T>
  void save_override(const boost::serialization::nvp<T>& t) {
    WriteAnnotation(t.name());
    save_override(t.const_value());
  }
  void save_override(const boost::archive::class_id_optional_type&) {}  // not stored
  void save_override(const boost::archive::class_id_type& id) { WriteSigned(static_cast<int>(id)); }
  void save_override(const boost::archive::class_id_reference_type& id) {
    WriteUnsigned(static_cast<unsigned int>(static_cast<int>(id)));
  }
  void save_override(const boost::archive::class_name_type& name) {
    save(std::string(static_cast<const char*>(name)));
  }
  void save_override(const boost::archive::object_id_type& id) {
    WriteUnsigned(static_cast<unsigned int>(id));
  }
  void save_override(const boost::archive::object_reference_type& id) {
    WriteUnsigned(static_cast<unsigned int>(id));
  }
  void save_override(const boost::archive::tracking_type& tracking) {
    save(static_cast<bool>(tracking));
  }
  void save_override(const boost::archive::version_type& version) {
    WriteUnsigned(static_cast<unsigned int>(version));
  }

  void WriteUnsigned(std::uint64_t value);
  void WriteSigned(std::int64_t value);
  void WriteHeader();
  void WriteAnnotation(const char* name);

  unsigned int suspended_ = 0;
  archive::AnnotationForm form_;
};

}  // namespace corvath

extern template class boost::archive::basic_binary_oprimitive<corvath::portable_binary_oarchive,
                                                              char, std::char_traits<char>>;
BOOST_SERIALIZATION_REGISTER_ARCHIVE(corvath::portable_binary_oarchive)
