#include "commands.h"
#include "interruption.h"
#include "standard_output.h"
#include "study/sample/sample.h"
#include "study/table/csv_writer.h"

#include <algorithm>
#include <string_view>

namespace cli {
namespace {

void Write(const Sample& sample, const std::string& path) {
  constexpr std::size_t kBlock = 4096;
  OutputFile file(path, ClaimStandardOutput(), &GetFileWatcher());
  CsvWriter writer(file);
  const SampleInputs& inputs = sample.GetInputs();
  for (const std::string& name : inputs.GetNames()) writer.Add(name);
  writer.EndRecord();
  std::vector<const TableColumn*> columns;
  for (const std::string& name : inputs.GetNames())
    columns.push_back(inputs.GetColumns().Find(name));
  for (std::size_t first = 0; first < sample.GetSize(); first += kBlock) {
    const Eigen::MatrixXd values =
        sample.GetPoints(first, std::min(kBlock, sample.GetSize() - first));
    for (Eigen::Index i = 0; i < values.rows(); ++i) {
      for (Eigen::Index k = 0; k < values.cols(); ++k) {
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

void RunSample(const SampleOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  SampleRequest request;
  request.scheme = options.scheme;
  request.n = options.n;
  request.seed = options.seed;
  request.wording = Wording::kCommandLine;
  Write(Sample(request, options.from.empty()
                            ? SampleInputs::FromTexts(options.inputs)
                            : SampleInputs::FromProject(Project::Open(options.from, options.hash))),
        options.out);
}

}  // namespace cli
