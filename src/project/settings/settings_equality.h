#pragma once

#include "foundation/closeness.h"

#include <boost/variant.hpp>

#include <cmath>
#include <map>
#include <string>
#include <utility>

/// The two equalities of settings: exact, or with doubles compared by closeness.
namespace corvath::math::metamodel {

struct ExactlyEqual {
  template <class T>
  bool operator()(const T& a, const T& b) const {
    return a == b;
  }
  bool Limits(const std::pair<double, double>& a, const std::pair<double, double>& b) const {
    return a == b;
  }
};

struct NearlyEqual {
  template <class T>
  bool operator()(const T& a, const T& b) const {
    return a == b;
  }
  bool operator()(double a, double b) const { return IsClose(a, b, kEps); }
  template <class... T>
  bool operator()(const boost::variant<T...>& a, const boost::variant<T...>& b) const {
    const double* x = boost::get<double>(&a);
    const double* y = boost::get<double>(&b);
    return x && y ? (*this)(*x, *y) : a == b;
  }
  template <class T>
  bool operator()(const std::map<std::wstring, T>& a, const std::map<std::wstring, T>& b) const {
    if (a.size() != b.size()) return false;
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j)
      if (i->first != j->first || !(*this)(i->second, j->second)) return false;
    return true;
  }
  bool Limits(const std::pair<double, double>& a, const std::pair<double, double>& b) const {
    const auto same = [this](double x, double y) {
      return (std::isinf(x) && std::isinf(y)) || (*this)(x, y);
    };
    return same(a.first, b.first) && same(a.second, b.second);
  }
};

/// Whether `equal` holds for each of these members of a and b.
template <class T, class Equal, class... Members>
bool MembersEqual(const T& a, const T& b, const Equal& equal, Members... members) {
  return (equal(a.*members, b.*members) && ...);
}

}  // namespace corvath::math::metamodel
