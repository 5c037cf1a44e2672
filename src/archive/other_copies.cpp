#include "archive/other_copies.h"

#include <boost/serialization/extended_type_info.hpp>
#include <dlfcn.h>

namespace corvath::archive {
namespace {

const char own_place = 0;

void KeepLoaded(const Dl_info& copy) {
  dlopen(copy.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace

void KeepLoadedWithOtherCopies(const char* export_key) {
  // Of several entries of one key the registry gives the oldest.
  const auto* const oldest = boost::serialization::extended_type_info::find(export_key);
  Dl_info own;
  Dl_info other;
  if (oldest == nullptr || dladdr(&own_place, &own) == 0 || dladdr(oldest, &other) == 0) return;
  if (own.dli_fbase == other.dli_fbase) return;
  KeepLoaded(own);
  KeepLoaded(other);
}

}  // namespace corvath::archive
