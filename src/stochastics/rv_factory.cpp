#include "stochastics/rv_factory.h"

#include "foundation/exception.h"
#include "stochastics/rv_beta.h"
#include "stochastics/rv_exponential.h"
#include "stochastics/rv_gumbel.h"
#include "stochastics/rv_lognormal.h"
#include "stochastics/rv_normal.h"
#include "stochastics/rv_uniform.h"

#include <iostream>

namespace corvath::algorithm {

namespace {

template <class... Types>
void RegisterAll(RVFactory& factory) {
  (factory.Register(boost::make_shared<Types>()), ...);
}

}  // namespace

RVFactory& RVFactory::GetInstance() {
  static RVFactory instance;
  return instance;
}

RVFactory::RVFactory() {
  try {
    RegisterAll<RV_Uniform, RV_Normal, RV_Lognormal, RV_Exponential, RV_Gumbel, RV_Beta>(*this);
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
