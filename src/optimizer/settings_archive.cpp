#include "archive/instantiate.h"
#include "optimizer/settings_nlpqlp.h"

namespace corvath::algorithm::optimizer {

using boost::serialization::base_object;
using boost::serialization::make_nvp;

template <class Archive>
void OptimizerSettingsBase<double>::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(ninputs_);
  ar& BOOST_SERIALIZATION_NVP(nobjectives_);
  ar& BOOST_SERIALIZATION_NVP(nequalities_);
  ar& BOOST_SERIALIZATION_NVP(ninequalities_);
  ar& BOOST_SERIALIZATION_NVP(start_designs_);
  ar& BOOST_SERIALIZATION_NVP(lowerbounds_);
  ar& BOOST_SERIALIZATION_NVP(upperbounds_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(parameter_types_);
    ar& BOOST_SERIALIZATION_NVP(discrete_states_vector_);
    return;
  }
  // As many defaults as there are stored bounds: a number of inputs alone may be damaged.
  const auto count = static_cast<std::size_t>(lowerbounds_.size());
  parameter_types_.assign(count, 0);
  discrete_states_vector_.assign(count, Vector());
}

template <class Archive>
void OptimizerSettingsGradientBase<double>::serialize(Archive& ar, unsigned int) {
  ar& make_nvp("OptimizerSettingsBase<T>", base_object<OptimizerSettingsBase<double>>(*this));
  ar& BOOST_SERIALIZATION_NVP(max_num_function_calls_);
  ar& BOOST_SERIALIZATION_NVP(accuracy_);
}

template <class Archive>
void OptimizerSettingsNLPQLP<double>::serialize(Archive& ar, unsigned int version) {
  ar& make_nvp("OptimizerSettingsGradientBase<T>",
               base_object<OptimizerSettingsGradientBase<double>>(*this));
  ar& BOOST_SERIALIZATION_NVP(nparallel_);
  if (version < 1) {
    std::int32_t computeinititalhessian = 0;  // an option that no longer exists
    ar& BOOST_SERIALIZATION_NVP(computeinititalhessian);
  }
  ar& BOOST_SERIALIZATION_NVP(gradient_dx_);
  ar& BOOST_SERIALIZATION_NVP(nonmonotonous_line_search_stack_size_);
  ar& BOOST_SERIALIZATION_NVP(numerical_differences_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(use_initial_stepsize_limit_);
    ar& BOOST_SERIALIZATION_NVP(max_stepsize_);
  } else {
    use_initial_stepsize_limit_ = false;
    max_stepsize_.setConstant(gradient_dx_.size(), 0.2);
  }
  if (version >= 2)
    ar& BOOST_SERIALIZATION_NVP(min_stepsize_);
  else
    min_stepsize_ = 0.0;
}

}  // namespace corvath::algorithm::optimizer

using corvath::algorithm::optimizer::OptimizerSettingsBase;
using corvath::algorithm::optimizer::OptimizerSettingsGradientBase;
using corvath::algorithm::optimizer::OptimizerSettingsNLPQLP;

ZEL_INSTANTIATE_SERIALIZE(OptimizerSettingsBase<double>)
ZEL_INSTANTIATE_SERIALIZE(OptimizerSettingsGradientBase<double>)
ZEL_INSTANTIATE_SERIALIZE(OptimizerSettingsNLPQLP<double>)
ZEL_EXPORT_IMPLEMENT(OptimizerSettingsBase<double>)
ZEL_EXPORT_IMPLEMENT(OptimizerSettingsGradientBase<double>)
ZEL_EXPORT_IMPLEMENT(OptimizerSettingsNLPQLP<double>)
