#pragma once

namespace CLI {
class App;
}

namespace cli {

/// Add the commands that answer questions with the models of a project, options and all.
void AddSensitivity(CLI::App& app);
void AddPropagate(CLI::App& app);
void AddOptimize(CLI::App& app);

}  // namespace cli
