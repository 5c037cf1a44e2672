#pragma once

#include "calculator/workspace.h"

#include <set>
#include <string>

namespace corvath::calculator {

/// Names of the objects and constants that the text depends on, directly or through expressions.
/// @throws CCircularDependencyException  an object depends on itself
std::set<std::wstring> GetDependencies(Workspace& workspace, const ParsedText& text);

/// Whether an object that the text depends on depends on itself.
bool HasCircularDependency(Workspace& workspace, const ParsedText& text);

/// The objects that the text itself reads, those in the bodies of the macros that it calls among
/// them; not what the expressions of objects read. Known or not.
std::set<const Object*> FindReads(Workspace& workspace, const ParsedText& text);

}  // namespace corvath::calculator
