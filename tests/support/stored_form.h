#pragma once

#include "support/archive_round_trip.h"
#include "support/testing.h"

#include <Eigen/Core>
#include <boost/make_shared.hpp>

#include <fstream>
#include <type_traits>
#include <typeinfo>

/// One table per persisted class: its fields in the order of the file, the class versions that hold
/// them, a value, and how an object shows it. From the table comes the stored form of any class
/// version, and what an object that reads it must hold.
namespace support {

/// Class versions from the first to the last.
struct Versions {
  unsigned first = 0;
  unsigned last = std::numeric_limits<unsigned>::max();
  bool Has(unsigned version) const { return first <= version && version <= last; }
};
inline Versions Since(unsigned version) {
  return {version};
}
inline Versions Until(unsigned version) {
  return {0, version};
}

/// A getter that is overloaded, or that belongs to a part of the object.
#define ZEL_SHOWN_BY(path) [](const auto& object) -> decltype(auto) { return object.path; }

/// Key and getter of a public member that is stored under its own name.
#define ZEL_MEMBER(Class, member) #member, &Class::member

/// Writes one field under its name.
template <class T>
void Put(corvath::portable_binary_oarchive& ar, const char* name, const T& value) {
  ar << boost::serialization::make_nvp(name, value);
}

template <class T, class = void>
struct HasEquality : std::false_type {};
template <class T>
struct HasEquality<T, std::void_t<decltype(std::declval<T>() == std::declval<T>())>>
    : std::true_type {};
template <class T>
struct HasEquality<boost::shared_ptr<T>> : std::false_type {};
template <class Key, class T>
struct HasEquality<std::map<Key, boost::shared_ptr<T>>> : std::false_type {};

template <class T, class = void>
struct HasClone : std::false_type {};
template <class T>
struct HasClone<T, std::void_t<decltype(std::declval<const T>().Clone())>> : std::true_type {};

/// Equality of values; of objects behind pointers and of classes without it, that of their bytes.
template <class T>
bool AreSame(const T& a, const T& b) {
  if constexpr (std::is_base_of_v<Eigen::EigenBase<T>, T>)  // asserts equal sizes
    return a.rows() == b.rows() && a.cols() == b.cols() && a == b;
  else if constexpr (HasEquality<T>::value)
    return a == b;
  else
    return Save(a) == Save(b);
}

/// What the archive takes for an object of T: it has T's class record, with the class version that
/// the form has set, and writes the fields of the form.
template <class T, bool kTracked>
struct StoredAs {
  std::function<void(corvath::portable_binary_oarchive&)> write;

  template <class Archive>
  void serialize(Archive& ar, unsigned int) {
    write(ar);
  }
};

/// @tparam kTracked  whether each object of T has an object id in the file
template <class T, bool kTracked = true>
class StoredForm {
 public:
  static constexpr std::size_t kUnchanged = std::numeric_limits<std::size_t>::max();
  template <class Get>
  using Shown = std::decay_t<std::invoke_result_t<const Get&, const T&>>;

  /// @param restores_defaults  an object that held other values before has the defaults where an
  ///                           old version stores nothing
  explicit StoredForm(unsigned newest, bool restores_defaults = false)
      : newest_(newest), restores_defaults_(restores_defaults) {}

  /// A field of every version that `get` shows: a member, a getter, or a function of the object.
  template <class Get>
  StoredForm& Field(const char* name, const Get& get, Shown<Get> value) {
    return Converted(name, get, std::move(value), {});
  }
  /// From a version that does not hold the field comes `other`.
  template <class Get>
  StoredForm& Field(const char* name, const Get& get, Shown<Get> value, Versions versions,
                    Shown<Get> other = {}) {
    AddField(name, value, other, versions);
    AddExpectation(name, get,
                   [=](unsigned version) { return versions.Has(version) ? &value : &other; });
    return *this;
  }
  /// A field that comes in another way from the rest of the versions `shown`. What the object shows
  /// from versions outside of them stands in rows of its own.
  template <class Get>
  StoredForm& Converted(const char* name, const Get& get, Shown<Get> value, Versions versions,
                        Versions shown = {}) {
    T fresh;
    AddField<Shown<Get>>(name, value, std::invoke(get, fresh), versions);
    return Shows(get, value, shown, name);
  }

  /// A field that equality alone sees.
  template <class Value>
  StoredForm& Hidden(const char* name, const Value& value, const Value& other,
                     Versions versions = {}) {
    AddField(name, value, other, versions);
    return *this;
  }

  /// A field that equality does not see; from a version that does not hold it comes `other`.
  template <class Get>
  StoredForm& Uncompared(const char* name, const Get& get, Shown<Get> value, Versions versions = {},
                         Shown<Get> other = {}) {
    Raw(name, value, versions);
    AddExpectation(name, get,
                   [=](unsigned version) { return versions.Has(version) ? &value : &other; });
    return *this;
  }

  /// A field that a reader converts or drops. A value that shares a class with the form must come
  /// from a form (see As), too: an archive holds the record of each class once.
  template <class Value>
  StoredForm& Raw(const char* name, const Value& value, Versions versions = {}) {
    rows_.push_back({name, versions, 0, [=](Archive& ar, std::size_t) { Put(ar, name, value); },
                     [](const T&, unsigned) {}});
    return *this;
  }

  /// The same form with another value in the first field of that name.
  template <class Value>
  StoredForm With(const std::string& name, const Value& value) const {
    StoredForm changed = *this;
    for (Row& row : changed.rows_)
      if (row.name == name) {
        row.write = [=](Archive& ar, std::size_t) { Put(ar, name.c_str(), value); };
        return changed;
      }
    ADD_FAILURE() << "no field " << name;
    return changed;
  }

  /// What `get` shows of an object that read one of these versions.
  template <class Get>
  StoredForm& Shows(const Get& get, Shown<Get> value, Versions versions = {},
                    const char* name = "what comes") {
    AddExpectation(name, get,
                   [=](unsigned version) { return versions.Has(version) ? &value : nullptr; });
    return *this;
  }

  /// The part of a base class, which has a version of its own.
  template <class Base, bool kBaseTracked>
  StoredForm& Part(const char* name, const StoredForm<Base, kBaseTracked>& base, unsigned version) {
    rows_.push_back(
        {name,
         {},
         base.GetNumChanges(),
         [=](Archive& ar, std::size_t changed) { Put(ar, name, base.As(version, changed)); },
         [=](const T& object, unsigned) { base.Expect(object, version); }});
    return *this;
  }
  template <class Base, bool kBaseTracked>
  StoredForm& Part(const char* name, const StoredForm<Base, kBaseTracked>& base) {
    return Part(name, base, base.GetNewest());
  }

  unsigned GetNewest() const { return newest_; }
  std::size_t GetNumChanges() const {
    std::size_t count = 0;
    for (const Row& row : rows_) count += row.num_changes;
    return count;
  }

  /// What to put into an archive: this form of class version `version`, in which one of the values
  /// is the other one. One version per archive; the form must live as long as the result.
  StoredAs<T, kTracked> As(unsigned version, std::size_t changed = kUnchanged) const {
    boost::serialization::version<StoredAs<T, kTracked>>::value = static_cast<int>(version);
    return {[=](Archive& ar) {
      std::size_t before = 0;  // beyond `changed` the difference wraps to a number of no row
      for (const Row& row : rows_) {
        if (row.versions.Has(version)) row.write(ar, changed - before);
        before += row.num_changes;
      }
    }};
  }
  std::string Write(unsigned version, std::size_t changed = kUnchanged) const {
    std::string bytes = Save(As(version, changed));
    KeepInput(bytes);
    return bytes;
  }
  T Read(unsigned version) const { return Load<T>(Write(version)); }

  void Expect(const T& object, unsigned version) const {
    for (const Row& row : rows_) row.expect(object, version);
  }

  /// Every version is read, the newest is written, and copies hold the same fields.
  void Check() const {
    CheckReading();
    T read;
    LoadInto(Write(newest_), read);
    EXPECT_EQ(Save(read), Write(newest_));
  }

  /// Reading and copies alone, for a class that writes more than it has read.
  void CheckReading() const {
    for (unsigned version = 0; version <= newest_; ++version) CheckReading(version);
  }
  void CheckReading(unsigned version) const {
    T read;
    if (restores_defaults_) LoadInto(Write(newest_), read);
    ExpectReads(version, read);
    if (version == newest_) ExpectCopies(read);
  }

  /// Check(), and an object of the newest version that differs in one field is not equal.
  template <class Equal>
  void Check(const Equal& equal) const {
    Check();
    T read;
    LoadInto(Write(newest_), read);
    for (std::size_t changed = 0; changed <= GetNumChanges(); ++changed) {
      T other;
      LoadInto(Write(newest_, changed), other);
      const bool is_same = changed == GetNumChanges();  // past the last field
      EXPECT_EQ(equal(read, other), is_same) << "with change " << changed;
      EXPECT_EQ(equal(other, read), is_same) << "with change " << changed;
    }
  }

 private:
  using Archive = corvath::portable_binary_oarchive;

  struct Row {
    std::string name;
    Versions versions;
    std::size_t num_changes;  ///< values of the newest version that can be the other one
    std::function<void(Archive&, std::size_t changed)> write;
    std::function<void(const T&, unsigned version)> expect;
  };

  template <class Value>
  void AddField(const char* name, const Value& value, const Value& other, Versions versions) {
    EXPECT_FALSE(AreSame(value, other)) << name << ": this row cannot fail";
    rows_.push_back(
        {name, versions, versions.Has(newest_) ? std::size_t{1} : std::size_t{0},
         [=](Archive& ar, std::size_t changed) { Put(ar, name, changed == 0 ? other : value); },
         [](const T&, unsigned) {}});
  }
  /// @param expected  class version to a pointer to the value, null where none is expected
  template <class Get, class Expected>
  void AddExpectation(const char* name, const Get& get, const Expected& expected) {
    rows_.push_back({"",
                     {},
                     0,
                     [](Archive&, std::size_t) {},
                     [=](const T& object, unsigned version) {
                       const Shown<Get>* const value = expected(version);
                       if (!value) return;
                       const Shown<Get> found = std::invoke(get, object);
                       EXPECT_TRUE(AreSame(found, *value)) << name << " of version " << version;
                     }});
  }

  void ExpectReads(unsigned version, T& read) const {
    // A number behind the object shows that the reader took all of it and no more.
    std::stringstream stream(std::ios::in | std::ios::out | std::ios::binary);
    {
      Archive out(stream);
      const auto stored = As(version);
      out << stored << 42;
    }
    KeepInput(stream.str());
    corvath::portable_binary_iarchive in(stream, corvath::archive::kThrowOnMismatch);
    int behind = 0;
    ASSERT_NO_THROW(in >> read >> behind) << "version " << version;
    EXPECT_EQ(behind, 42) << "version " << version;
    Expect(read, version);
  }

  /// ZEL_KEEP_FORMS names a folder for the forms as inputs of fuzz/records_fuzzer.cpp.
  static void KeepInput(const std::string& bytes) {
    const char* const folder = std::getenv("ZEL_KEEP_FORMS");
    if (folder == nullptr) return;
    const std::string input = typeid(T).name() + ('\n' + bytes);
    const std::string name = std::to_string(std::hash<std::string>()(input));
    std::ofstream(folder + ('/' + name), std::ios::binary) << input;
  }

  void ExpectCopies(const T& read) const {
    SCOPED_TRACE("copy");
    if constexpr (std::is_copy_constructible_v<T>) Expect(T(read), newest_);
    if constexpr (std::is_copy_assignable_v<T>) {
      T assigned;
      assigned = read;
      Expect(assigned, newest_);
    }
    if constexpr (HasClone<T>::value) ExpectClone(read.Clone());
  }

  void ExpectClone(const T& clone) const { Expect(clone, newest_); }
  template <class Base>
  void ExpectClone(Base* clone) const {
    ExpectClone(std::unique_ptr<Base>(clone));
  }
  template <class Pointer>
  void ExpectClone(const Pointer& clone) const {
    Expect(dynamic_cast<const T&>(*clone), newest_);
  }

  unsigned newest_;
  bool restores_defaults_;
  std::vector<Row> rows_;
};

}  // namespace support

namespace boost::serialization {

template <class T, bool kTracked>
struct version<support::StoredAs<T, kTracked>> {
  using tag = mpl::integral_c_tag;
  using type = mpl::int_<0>;
  static inline int value = 0;  ///< set by the form that writes
};

template <class T, bool kTracked>
struct tracking_level<support::StoredAs<T, kTracked>> {
  using tag = mpl::integral_c_tag;
  using type = mpl::int_<kTracked ? track_always : track_selectively>;
  static constexpr int value = kTracked ? track_always : track_selectively;
};

}  // namespace boost::serialization
