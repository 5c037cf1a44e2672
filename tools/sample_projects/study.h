#pragma once

#include "design/designs/design.h"
#include "project/vrdb.h"
#include "ten_bar_truss.h"
#include "trained_model.h"

#include <Eigen/Core>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace sample_projects {

/// A study of the truss on its way into a project file.
struct Study {
  corvath::algorithm::datatypes::VRDB project;
  std::vector<std::wstring> inputs;  ///< m, in the order of the columns of `points`
  Eigen::MatrixXd points;            ///< n x m
};

/// A Latin hypercube of `n` points in [0, 1]^d (n x d) that fill the space evenly; the same seed gives
/// the same sample everywhere.
Eigen::MatrixXd SpaceFillingSample(Eigen::Index n, Eigen::Index d, std::uint32_t seed);

/// A project of algorithm type 18 over the given kind of inputs (1 deterministic, 2 random).
Study NewStudy(std::int32_t sampling_type);

/// A design with the responses mass, displacement, stress (a vector) and the study's criteria.
/// @param parameters  names and values
corvath::algorithm::datatypes::Design AnalyseDesign(
    const std::vector<std::pair<std::wstring, double>>& parameters, const Truss& truss,
    std::uint64_t id);

/// Trains one model for each scalar response and each element of a vector response of the project's
/// designs, in ten cross-validation groups, and files all that a reader expects to find with them.
/// @param train  chooses the model of the response of that full name
void AddModels(Study& study,
               const std::function<TrainedModel(const std::wstring&,
                                                const corvath::training::ResponseData&)>& train);

}  // namespace sample_projects
