#include "commands.h"
#include "csv_writer.h"
#include "doe/doe.h"
#include "doe/factorial.h"
#include "output_file.h"
#include "sample_inputs.h"
#include "standard_output.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <vector>

namespace cli {
namespace {

using corvath::math::DOE;
using Eigen::Index;

/// Lower case, with a hyphen for each blank: what one likes to type.
std::string SchemeName(std::int32_t type) {
  std::string name;
  for (const wchar_t c : corvath::math::SamplingTypeText(type))
    name += c == L' ' ? '-' : static_cast<char>(std::tolower(static_cast<char>(c)));
  return name;
}

bool CanBuild(std::int32_t type) {
  return type < corvath::math::kDOptimalCustomizable || type > corvath::math::kDOptimalQuadratic;
}

/// The scheme of that name, or the only one whose name begins so.
std::int32_t FindScheme(const std::string& text) {
  std::vector<std::int32_t> found;
  std::string names;
  for (std::int32_t type = 0; type < corvath::math::kNoSampling; ++type) {
    const std::string name = SchemeName(type);
    if (name == text) return type;
    if (!CanBuild(type)) continue;
    if (!text.empty() && name.compare(0, text.size(), text) == 0) found.push_back(type);
    names += (names.empty() ? "" : ", ") + name;
  }
  if (found.size() == 1) return found.front();
  throw Refusal("--scheme: \"" + text + "\" is " + (found.empty() ? "none" : "not one alone") +
                " of " + names);
}

bool NeedsLevel(std::int32_t type) {
  switch (type) {
    case corvath::math::kCenterPoint:
    case corvath::math::kCentralComposite:
    case corvath::math::kMixedTerms:
    case corvath::math::kKoshalLinear:
    case corvath::math::kKoshalQuadratic:
    case corvath::math::kBoxBehnken:
    case corvath::math::kFullCombinatorial:
      return false;
    default:
      return true;
  }
}

DOE MakeSample(const SampleOptions& options, std::int32_t type, const SampleInputs& inputs) {
  constexpr std::uint64_t kOnlyLevel = 2;  // fits each scheme that has no choice
  if (NeedsLevel(type) && options.n == 0)
    throw Refusal("--n: " + SchemeName(type) + " takes a number from 1");
  const std::uint64_t level = NeedsLevel(type) ? options.n : kOnlyLevel;
  const auto states = inputs.GetStateLists();
  DOE sample(inputs.GetNames().size(), options.seed, states);
  // Levels must suit the inputs. A sequence gives any number of points, even if few of them say
  // little about the inputs.
  if (corvath::math::IsGridScheme(type))
    corvath::math::NumDesigns(type, sample.GetDim(), level, states);
  sample.Build(type, level, /*append=*/false);
  return sample;
}

void Write(const DOE& sample, bool is_grid, const SampleInputs& inputs, const std::string& path) {
  constexpr std::size_t kBlock = 4096;
  OutputFile file(path);
  CsvWriter writer(file);
  for (const std::string& name : inputs.GetNames()) writer.Add(name);
  writer.EndRecord();
  std::vector<const TableColumn*> columns;
  for (const std::string& name : inputs.GetNames())
    columns.push_back(inputs.GetColumns().Find(name));
  const auto& designs = sample.GetDesigns();
  Eigen::MatrixXd points;
  for (std::size_t first = 0; first < designs.size(); first += kBlock) {
    const std::size_t count = std::min(kBlock, designs.size() - first);
    points.resize(static_cast<Index>(count), static_cast<Index>(sample.GetDim()));
    for (std::size_t i = 0; i < count; ++i)
      points.row(static_cast<Index>(i)) = Eigen::Map<const Eigen::RowVectorXd>(
          designs[first + i].data(), static_cast<Index>(sample.GetDim()));
    const Eigen::MatrixXd values = inputs.ToUnits(points, is_grid);
    for (Index i = 0; i < values.rows(); ++i) {
      for (Index k = 0; k < values.cols(); ++k) {
        const TableColumn* const column = columns[static_cast<std::size_t>(k)];
        const std::string word = column == nullptr ? "" : column->WordOf(values(i, k));
        if (word.empty())
          writer.Add(values(i, k));
        else
          writer.Add(std::string_view(word));
      }
      writer.EndRecord();
    }
  }
  writer.Flush();
  file.Commit();
}

}  // namespace

std::vector<std::string> SchemeNames() {
  std::vector<std::string> names;
  for (std::int32_t type = 0; type < corvath::math::kNoSampling; ++type)
    if (CanBuild(type)) names.push_back(SchemeName(type));
  return names;
}

void RunSample(const SampleOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  const std::int32_t type = FindScheme(options.scheme);
  const SampleInputs inputs = options.from.empty()
                                  ? SampleInputs::FromTexts(options.inputs)
                                  : SampleInputs::FromProject(options.from, options.hash);
  const DOE sample = MakeSample(options, type, inputs);
  Write(sample, corvath::math::IsGridScheme(type), inputs, options.out);
}

}  // namespace cli
