#include "calculator/macro_file.h"

#include "foundation/environment.h"
#include "foundation/replacement_file.h"
#include "foundation/text.h"
#include "foundation/text_stream.h"

#include <boost/archive/xml_iarchive.hpp>
#include <boost/archive/xml_oarchive.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/serialization/item_version_type.hpp>
#include <boost/serialization/library_version_type.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/split_member.hpp>
#include <boost/serialization/string.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <locale>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace corvath::calculator {

namespace {

namespace fs = boost::filesystem;
using boost::serialization::make_nvp;
using Macro = CalculatorTypeTraits::Macro;

constexpr std::size_t kMaxFileSize = std::size_t{1} << 24;

/// The tags. The archive compares the name of an end tag with ours before it looks at the length of
/// ours: each has room for the longest one that a file may have.
constexpr std::size_t kMaxTag = 64;
using Tag = const char[kMaxTag];
constexpr Tag kMacros = "macros";
constexpr Tag kCount = "count";
constexpr Tag kItemVersion = "item_version";
constexpr Tag kItem = "item";
constexpr Tag kMacroId = "macro_id_";
constexpr Tag kArgNames = "arg_names_";
constexpr Tag kExpression = "expression_";
constexpr Tag kDescription = "description_";
constexpr Tag kCategory = "category_";

// Texts pass through the archive as UTF-8 of our own making: its wide strings depend on the locale
// of the process, and at half a character they loop for ever.

template <class Archive>
void Save(Archive& ar, const char* tag, const std::wstring& text) {
  const std::string utf8 = utils::ToUtf8Strict(text);
  ar << make_nvp(tag, utf8);
}

template <class Archive>
void Load(Archive& ar, const char* tag, std::wstring& text) {
  std::string utf8;
  ar >> make_nvp(tag, utf8);
  text = utils::FromUtf8(utf8);
}

// Collections in the form of the library's own ones. Those allocate what a count says.

template <class Archive>
void SaveCount(Archive& ar, std::size_t count) {
  const unsigned int item_version = 0;
  ar << make_nvp(kCount, count) << make_nvp(kItemVersion, item_version);
}

template <class Archive>
std::size_t LoadCount(Archive& ar) {
  std::size_t count = 0;
  ar >> make_nvp(kCount, count);
  if (boost::serialization::library_version_type(3) < ar.get_library_version()) {
    unsigned int item_version = 0;
    ar >> make_nvp(kItemVersion, item_version);
  }
  return count;
}

struct StoredNames {
  std::list<std::wstring> names;

  template <class Archive>
  void save(Archive& ar, unsigned int) const {
    SaveCount(ar, names.size());
    for (const std::wstring& name : names) Save(ar, kItem, name);
  }
  template <class Archive>
  void load(Archive& ar, unsigned int) {
    for (std::size_t count = LoadCount(ar); count > 0; --count)
      Load(ar, kItem, names.emplace_back());
  }
  BOOST_SERIALIZATION_SPLIT_MEMBER()
};

struct StoredMacro {
  Macro macro;

  template <class Archive>
  void save(Archive& ar, unsigned int) const {
    const StoredNames names{macro.arg_names_};
    Save(ar, kMacroId, macro.macro_id_);
    ar << make_nvp(kArgNames, names);
    Save(ar, kExpression, macro.expression_);
    Save(ar, kDescription, macro.description_);
    Save(ar, kCategory, macro.category_);
  }
  template <class Archive>
  void load(Archive& ar, unsigned int) {
    StoredNames names;
    Load(ar, kMacroId, macro.macro_id_);
    ar >> make_nvp(kArgNames, names);
    Load(ar, kExpression, macro.expression_);
    Load(ar, kDescription, macro.description_);
    Load(ar, kCategory, macro.category_);
    macro.arg_names_ = std::move(names.names);
  }
  BOOST_SERIALIZATION_SPLIT_MEMBER()
};

/// After a failure of `load` it holds what came before.
struct StoredMacros {
  CalculatorTypeTraits::Macros macros;

  template <class Archive>
  void save(Archive& ar, unsigned int) const {
    SaveCount(ar, macros.size());
    for (const Macro& macro : macros) {
      const StoredMacro item{macro};
      ar << make_nvp(kItem, item);
    }
  }
  template <class Archive>
  void load(Archive& ar, unsigned int) {
    for (std::size_t count = LoadCount(ar); count > 0; --count) {
      StoredMacro item;
      ar >> make_nvp(kItem, item);
      macros.insert(std::move(item.macro));
    }
  }
  BOOST_SERIALIZATION_SPLIT_MEMBER()
};

bool HasLongTag(const std::string& text) {
  for (std::size_t i = 0; (i = text.find("</", i)) != std::string::npos; i += 2)
    if (const std::size_t end = text.find('>', i); end != std::string::npos && end - i >= kMaxTag)
      return true;
  return false;
}

/// Whether a tag calls its object tracked without naming it: the archive would look for a number that
/// it never read. Takes time in proportion to the text.
bool HasTrackedWithoutId(std::string_view text) {
  constexpr std::string_view kLevel = "tracking_level", kUntracked = "=\"0\"";
  for (std::size_t i = 0; (i = text.find('<', i)) != std::string_view::npos;) {
    const std::size_t end = std::min(text.find_first_of("<>", i + 1), text.size());
    const std::string_view tag = text.substr(i, end - i);
    const bool is_named = tag.find("object_id") != std::string_view::npos;
    for (std::size_t k = 0; !is_named && (k = tag.find(kLevel, k)) != std::string_view::npos;) {
      k += kLevel.size();
      if (tag.substr(k, kUntracked.size()) != kUntracked) return true;
    }
    i = end;
  }
  return false;
}

std::string ReadFile(const fs::path& path) {
  const std::uintmax_t size = fs::file_size(path);
  if (size > kMaxFileSize) throw std::runtime_error("too large");
  std::ifstream stream(path.c_str(), std::ios::binary);
  if (!stream) throw std::runtime_error("cannot be opened");
  std::string text(static_cast<std::size_t>(size), '\0');
  stream.read(text.data(), static_cast<std::streamsize>(size));
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

/// Reads the archive `text` into `stored`.
/// @throws std::exception  whose texts, of several sources, tell the user nothing
void Parse(const std::string& text, StoredMacros& stored) {
  if (HasLongTag(text) || HasTrackedWithoutId(text)) throw std::runtime_error("unknown tags");
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  boost::archive::xml_iarchive archive(stream);
  archive >> make_nvp(kMacros, stored);
  // The archive's destructor reads on, and what it throws ends the process: give it a good end.
  stream.clear();
  stream.str("</boost_serialization>\n");
}

std::string Print(const CalculatorTypeTraits::Macros& macros) {
  utils::TextStream stream;
  {
    const StoredMacros stored{macros};
    boost::archive::xml_oarchive archive(stream);
    archive << make_nvp(kMacros, stored);
  }
  return stream.str();
}

}  // namespace

fs::path GetMacroFilePath() {
  return fs::path(utils::ToUtf8(utils::GetAppDataPath(1))) / "Corvath" / "calculator" /
         "macros.def";
}

MacroFileContent ReadMacroFile(const fs::path& path) {
  MacroFileContent content;
  boost::system::error_code error;
  const fs::file_status status = fs::status(path, error);
  content.exists = fs::exists(status);
  if (!content.exists) return content;
  StoredMacros stored;
  try {
    if (!fs::is_regular_file(status)) throw std::runtime_error("not a regular file");
    const std::string text = ReadFile(path);
    try {
      Parse(text, stored);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {
      throw std::runtime_error(stored.macros.empty() ? "damaged, or no macro file"
                                                     : "damaged behind macro " +
                                                           std::to_string(stored.macros.size()));
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& failure) {
    content.problem = failure.what();
  }
  content.macros = std::move(stored.macros);
  return content;
}

CalculatorTypeTraits::Macros LoadMacros(const fs::path& path) {
  try {
    return ReadMacroFile(path.empty() ? GetMacroFilePath() : path).macros;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return {};
  }
}

void SaveMacros(const fs::path& path, const CalculatorTypeTraits::Macros& macros) {
  const fs::path target = path.empty() ? GetMacroFilePath() : path;
  const std::string text = Print(macros);
  boost::system::error_code error;
  if (target.has_parent_path()) fs::create_directories(target.parent_path(), error);
  if (error) utils::ThrowWriteError(target, error.message());
  utils::ReplacementFile file(target);
  std::ofstream stream(file.GetName(), std::ios::binary | std::ios::trunc);
  stream << text;
  stream.close();
  if (!stream) utils::ThrowWriteError(target, "the disk is full or fails");
  file.Commit();
}

}  // namespace corvath::calculator
