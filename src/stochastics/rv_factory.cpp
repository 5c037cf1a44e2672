#include "stochastics/rv_factory.h"

#include "foundation/exception.h"
#include "foundation/until_unload.h"
#include "stochastics/distributions/rv_bernoulli.h"
#include "stochastics/distributions/rv_beta.h"
#include "stochastics/distributions/rv_exponential.h"
#include "stochastics/distributions/rv_frechet.h"
#include "stochastics/distributions/rv_general_discrete.h"
#include "stochastics/distributions/rv_gumbel.h"
#include "stochastics/distributions/rv_kernel.h"
#include "stochastics/distributions/rv_lambda.h"
#include "stochastics/distributions/rv_lognormal.h"
#include "stochastics/distributions/rv_loguniform.h"
#include "stochastics/distributions/rv_multi_uniform.h"
#include "stochastics/distributions/rv_normal.h"
#include "stochastics/distributions/rv_poisson.h"
#include "stochastics/distributions/rv_polymap.h"
#include "stochastics/distributions/rv_triangular.h"
#include "stochastics/distributions/rv_truncated_normal.h"
#include "stochastics/distributions/rv_uniform.h"
#include "stochastics/distributions/rv_weibull.h"

#include <iostream>

namespace corvath::algorithm {

namespace {

template <class... Types>
void RegisterAll(RVFactory& factory) {
  (factory.Register(boost::make_shared<Types>()), ...);
}

utils::UntilUnload<RVFactory> rv_factory;

}  // namespace

RVFactory& RVFactory::GetInstance() {
  return rv_factory.Get([] { return RVFactory(); });
}

RVFactory::RVFactory() {
  try {
    RegisterAll<RV_Uniform, RV_Normal, RV_Truncatednormal, RV_Lognormal, RV_Exponential,
                RV_Triangular, RV_Polymap, RV_Kernel, RV_Gumbel, RV_Weibull, RV_Frechet,
                RV_Bernoulli, RV_Beta, RV_Loguniform, RV_GeneralDiscrete, RV_MultiUniform,
                RV_Lambda, RV_Poisson>(*this);
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
