#pragma once

#include "study/table/design_table.h"

#include <string>
#include <vector>

namespace corvath::study {

/// Whether expressions can use the name for an object. Blanks do not count in expressions.
bool CanBeUsed(const std::wstring& name);

/// The identifier for a column whose name expressions cannot use: each run of other characters than
/// letters, digits and _ becomes one _, none at the end; a _ goes in front of a digit, and behind
/// the name of a constant. "load [kN]" becomes load_kN. A name that they can use stays.
std::string IdentifierOf(const std::string& name);

/// The texts of criteria with names and codes that expressions know. In a text
///
/// - `load [kN]`, in backquotes, or load_kN, see IdentifierOf, is the column "load [kN]", which
///   takes the identifier as its name in `table`; a note tells so;
/// - "steel" on one side of == or != with an input of words on the other is its code.
/// @throws Refusal  there is no such column or word, or two columns would have the same name
std::vector<std::string> UseColumns(const std::vector<std::string>& texts, DesignTable& table);

}  // namespace corvath::study
