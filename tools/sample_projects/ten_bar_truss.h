#pragma once

#include <array>

namespace sample_projects {

constexpr int kNumBars = 10;

/// What the truss is made of and bears.
struct Truss {
  std::array<double, kNumBars> areas;         ///< cross-sections, in^2
  std::array<double, 2> loads{100.0, 100.0};  ///< kips, downwards at the outer and the inner node
  double modulus = 1e4;                       ///< of elasticity, ksi
};

/// Response of the truss to its loads.
struct TrussResponse {
  double mass;          ///< lb (as weight, in the units of the sources)
  double displacement;  ///< in, largest magnitude of a nodal displacement component
  std::array<double, kNumBars> stresses;  ///< ksi, tension positive
};

/// The classical ten-bar cantilever truss: two bays of 360 in by 360 in, E = 10^4 ksi,
/// density 0.1 lb/in^3, a load of 100 kips downwards at each of the two free lower nodes (modulus and
/// loads may be changed).
///
/// V. B. Venkayya, "Design of optimum structures", Computers & Structures 1 (1971), pp. 265-309;
/// numbering, loads and limits (25 ksi, 2 in) after L. A. Schmit and B. Farshi, "Some approximation
/// concepts for structural synthesis", AIAA Journal 12 (1974), pp. 692-699, load case 1.
///
/// Linear finite element analysis with bar elements: 8 free degrees of freedom, one factorisation.
/// @throws std::domain_error  an area or the modulus is not positive
TrussResponse AnalyseTenBarTruss(const Truss& truss);

}  // namespace sample_projects
