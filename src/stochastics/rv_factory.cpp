#include "stochastics/rv_factory.h"

#include "foundation/exception.h"
#include "foundation/until_unload.h"

#include <iostream>

namespace corvath::algorithm {

namespace {

utils::UntilUnload<RVFactory> rv_factory;

}  // namespace

RVFactory& RVFactory::GetInstance() {
  return rv_factory.Get([] { return RVFactory(); });
}

RVFactory::RVFactory() {
  try {
#define ZEL_REGISTER(Class, name, id) Register(MakePrototype<Class>());
    ZEL_DISTRIBUTIONS(ZEL_REGISTER)
#undef ZEL_REGISTER
  } catch (const std::exception& error) {
    std::cerr << "Couldn't create RV Factory: " << error.what() << std::endl;
  } catch (...) {
    std::cerr << "Couldn't create RV Factory" << std::endl;
  }
}

boost::shared_ptr<RV> RVFactory::Create(int id) const {
  const auto found = prototypes_.find(id);
  if (found == prototypes_.end())
    throw utils::runtime_error(L"Asking for non existing RV type ident '" + std::to_wstring(id) +
                               L"'");
  return found->second->Clone();
}

void RVFactory::Register(const boost::shared_ptr<RV>& prototype) {
  prototypes_[prototype->GetTypeId()] = prototype;
}

}  // namespace corvath::algorithm
