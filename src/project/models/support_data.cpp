#include "design/designs/design_manager.h"
#include "design/designs/input_columns.h"
#include "design/parameters/parameter_manager.h"
#include "foundation/constants.h"
#include "foundation/log_line.h"
#include "metamodel/surrogate.h"
#include "project/models/surrogate_info_container.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <exception>
#include <new>

// Support data of the models are left out of a saved project and taken back from its designs.

namespace corvath::algorithm::datatypes {

namespace {

using math::kNaN;

/// Tells of designs that the project lacks: without them a model mostly has no errors.
void WarnOfMissing(const SurrogateInfo& info, std::size_t num_found) {
  const std::size_t num_used = info.GetUsedHids().size();
  if (num_found == num_used) return;
  utils::log::LogLine(utils::log::GetSharedStreamLog(), utils::log::kWarning)
      << num_used - num_found << L" of " << num_used << L" used designs of response '"
      << info.GetFullName() << L"' not found";
}

void Warn(const SurrogateInfo& info, const wchar_t* consequence) {
  utils::log::LogLine(utils::log::GetSharedStreamLog(), utils::log::kWarning)
      << L"empty id vector for response '" << info.GetFullName() << L"' - " << consequence;
}

/// Element `index` of a response value that has more than one, row by row; otherwise the single
/// number. NaN where there is none; of complex numbers the real part counts.
double ResponseValue(const CDesignEntry& entry, std::uint64_t index) {
  const math::Value* value = entry.Peek<math::Value>();
  if (!value) return entry.ToDouble();
  if (value->IsScalar() || value->IsBoolean()) return entry.ToDouble();
  if (value->IsVector()) {
    const auto& vector = value->GetVector();
    if (vector.size() == 1) return vector(0).real();
    return index < vector.size() ? vector(index).real() : kNaN;
  }
  if (value->IsMatrix()) {
    const auto& matrix = value->GetMatrix();
    const std::uint64_t size = matrix.size1() * matrix.size2();
    if (size == 1) return matrix(0, 0).real();
    return index < size ? matrix(index / matrix.size2(), index % matrix.size2()).real() : kNaN;
  }
  return kNaN;  // nothing, or a signal
}

Eigen::VectorXd ResponseValues(const std::vector<const Design*>& designs,
                               const SurrogateInfo& info) {
  Eigen::VectorXd values(static_cast<Eigen::Index>(designs.size()));
  std::size_t position = 0;  // designs of one project mostly agree in the order of responses
  for (std::size_t i = 0; i < designs.size(); ++i) {
    const EntrySequence& responses = designs[i]->GetResponses();
    if (position >= responses.size() || responses[position].first != info.GetResponseName())
      position = responses.FindPosition(info.GetResponseName());
    values(static_cast<Eigen::Index>(i)) =
        position == EntrySequence::npos
            ? kNaN
            : ResponseValue(responses[position].second, info.GetResponseIndex());
  }
  return values;
}

/// The models of a project mostly share their designs and inputs: the last point matrix is kept,
/// and they share it.
class SupportPoints {
 public:
  SupportPoints(const DesignManager& designs, const ParameterManager& parameters, InputSide side)
      : manager_(designs), parameters_(parameters), side_(side) {}

  /// Makes designs and points those of `info`.
  void Select(const SurrogateInfo& info) {
    std::vector<std::wstring> names = info.GetParameterNames();
    if (valid_ && ids_ == info.GetUsedHids() && names_ == names) return;
    valid_ = false;
    designs_ = manager_.FindDesigns(info.GetUsedHids());
    points_ = boost::make_shared<Eigen::MatrixXd>(
        InputColumns::Of(parameters_, names, side_).ToMatrix(designs_));
    ids_ = info.GetUsedHids();
    names_ = std::move(names);
    valid_ = true;
  }

  const std::vector<const Design*>& GetDesigns() const { return designs_; }
  const boost::shared_ptr<const Eigen::MatrixXd>& GetPoints() const { return points_; }

 private:
  const DesignManager& manager_;
  const ParameterManager& parameters_;
  InputSide side_;
  bool valid_ = false;
  SurrogateInfo::HidVector ids_;
  std::vector<std::wstring> names_;
  std::vector<const Design*> designs_;
  boost::shared_ptr<const Eigen::MatrixXd> points_;
};

}  // namespace

void SurrogateInfoContainer::ResetSupportData() {
  for (const SurrogateInfo& info : infos_) {
    if (!info.GetSurrogate()) continue;
    if (info.HasUsedHids())
      info.GetSurrogate()->SetSupportData(Eigen::MatrixXd(), {});
    else
      Warn(info, L"will not reset support data for saving vrdb");
  }
}

void SurrogateInfoContainer::RestoreSupportData(const DesignManager& designs,
                                                const ParameterManager& parameters, bool plain) {
  SupportPoints support(designs, parameters,
                        plain ? InputSide::kDeterministic : InputSide::kRandom);
  for (const SurrogateInfo& info : infos_) {
    if (!info.HasUsedHids()) {
      Warn(info, L"not able to restore support data");
      continue;
    }
    if (!info.GetSurrogate()) continue;
    try {
      support.Select(info);
      WarnOfMissing(info, support.GetDesigns().size());
      info.GetSurrogate()->SetSupportData(support.GetPoints(),
                                          ResponseValues(support.GetDesigns(), info));
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      // No support points, but their width: the model still predicts, and what needs the points
      // says that they are missing.
      const auto num_inputs = static_cast<Eigen::Index>(info.GetParameterNameLookupMap().size());
      info.GetSurrogate()->SetSupportData(Eigen::MatrixXd(0, num_inputs), Eigen::VectorXd());
      utils::log::LogLine(utils::log::GetSharedStreamLog(), utils::log::kError)
          << L"not able to restore support data of response '" << info.GetFullName() << L"': "
          << error.what();
    }
  }
}

}  // namespace corvath::algorithm::datatypes
