#ifndef ZELSOLVER_ZELSOLVER_HPP
#define ZELSOLVER_ZELSOLVER_HPP

/**
 * @file
 * zelsolver.h for C++17 and later: a project as a value, std::vector and spans in place of pointers
 * with sizes, exceptions in place of status numbers. Header-only; the program links the library.
 *
 *     const zelsolver::Project project("study.vrdb");
 *     std::vector<double> design;                       // in the order of GetInputs()
 *     for (const std::string& input : project.GetInputs())
 *       design.push_back(project.GetReferenceValue(input));
 *     const std::vector<double> values = project.Solve(design);
 *     for (std::size_t k = 0; k < values.size(); ++k)
 *       std::cout << project.GetOutputs()[k] << ' ' << values[k] << '\n';
 *
 * m is the number of inputs, R of outputs, C of criteria, n of designs; values are in the units of
 * the project. zelsolver.h says what holds for the library as a whole: layouts, bounds, threads.
 */

#include <zelsolver/zelsolver.h>

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace zelsolver {

/// A call that failed: what() names the project and gives the library's text.
class Error : public std::runtime_error {
 public:
  Error(const std::string& text, int status) : std::runtime_error(text), status_(status) {}
  /// ZEL_ERROR, ZEL_BAD_ARGUMENTS, ...; see zelsolver.h.
  int GetStatus() const noexcept { return status_; }

 private:
  int status_;
};

/// Elements in a row in somebody's memory: what std::span is in C++20. Made of anything that has
/// data() and size() (std::vector, std::array, std::span, ...), or of a pointer and a number.
template <class T>
class Span {
 public:
  Span(T* data, std::size_t size) : data_(data), size_(size) {}
  template <class Container, class Pointer = decltype(std::declval<Container&>().data()),
            class = std::enable_if_t<std::is_convertible<Pointer, T*>::value>>
  Span(Container&& container)  // NOLINT: a conversion, as that of std::span
      : data_(container.data()), size_(static_cast<std::size_t>(container.size())) {}
  T* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  T* data_;
  std::size_t size_;
};

/// Sets how many threads a call on many designs may use: 1 to 1024, or 0 for as many as the process
/// may use processors. It stands in the environment as ZELSOLVER_NUM_THREADS, where the library looks
/// at each call and child processes inherit it: call it while no other thread reads or changes the
/// environment, so while no call of the library runs.
/// @throws std::invalid_argument  more than 1024
inline void SetNumThreads(unsigned int number) {
  constexpr const char* kVariable = "ZELSOLVER_NUM_THREADS";
  if (number > 1024)
    throw std::invalid_argument(std::to_string(number) +
                                ": the number of threads must be 0 to 1024");
  const bool done = number == 0 ? unsetenv(kVariable) == 0
                                : setenv(kVariable, std::to_string(number).c_str(), 1) == 0;
  if (!done) throw std::bad_alloc();
}

/// Range of an input in the project's designs. An end that is no number is infinite.
struct Bounds {
  double lower;
  double upper;
};

/// A project file. A value: copies name the same file. Its file stays open, for all projects of the
/// process, until CloseAll(); a project that is used afterwards opens it again.
///
/// All functions throw Error when the library's call fails; std::bad_alloc apart, nothing else.
/// Threads may share a Project.
class Project {
 public:
  /// Opens the file, or finds it open.
  /// @param path  UTF-8
  /// @param hash  the file's SHA-512, 128 lower-case hexadecimal digits; empty: not checked
  explicit Project(std::string path, std::string hash = {})
      : path_(std::move(path)), hash_(std::move(hash)) {
    inputs_ = ReadNames(ZEL_INPUTS);
    outputs_ = ReadNames(ZEL_OUTPUTS);
    criteria_ = ReadNames(ZEL_CRITERIA);
  }

  const std::string& GetPath() const { return path_; }
  const std::string& GetHash() const { return hash_; }
  const std::vector<std::string>& GetInputs() const { return inputs_; }      ///< m
  const std::vector<std::string>& GetOutputs() const { return outputs_; }    ///< R
  const std::vector<std::string>& GetCriteria() const { return criteria_; }  ///< C

  /// Of each input: m.
  std::vector<Bounds> GetBounds() const {
    std::vector<double> values(2 * inputs_.size());
    Check(dzel2_getInputBounds_hash(path_.c_str(), values.data(), Hash()));
    std::vector<Bounds> bounds;
    for (std::size_t i = 0; i < values.size(); i += 2)
      bounds.push_back(ToBounds(values[i], values[i + 1]));
    return bounds;
  }

  /// Of any parameter that varies, whether the models use it or not.
  Bounds GetBounds(const std::string& parameter) const {
    double values[2];
    Check(dzel2_getInputBoundsPerParameter_hash(path_.c_str(), parameter.c_str(), values, Hash()));
    return ToBounds(values[0], values[1]);
  }

  /// The nominal value of any parameter; NaN when none is set.
  double GetReferenceValue(const std::string& parameter) const {
    double value = 0.0;
    Check(
        dzel2_getReferenceValuePerParameter_hash(path_.c_str(), parameter.c_str(), &value, Hash()));
    return value;
  }

  /// Coefficients of prognosis of the model of an output: m single ones, of each input, then the
  /// total; -1 where the project has none.
  std::vector<double> GetCoPs(const std::string& output) const {
    std::vector<double> values(inputs_.size() + 1);
    Check(dzel2_getCoPValuesPerResponse_hash(path_.c_str(), output.c_str(), values.data(), Hash()));
    return values;
  }

  /// Whether the model of an output leaves each input out: m.
  std::vector<bool> GetFiltered(const std::string& output) const {
    std::vector<unsigned int> states(inputs_.size() + 1);  // the last one is of the total CoP
    Check(dzel2_getFilteredStatesPerResponse_hash(path_.c_str(), output.c_str(), states.data(),
                                                  Hash()));
    return std::vector<bool>(states.begin(), states.end() - 1);
  }

  /// Predicts at n designs.
  /// @param inputs  n * m values, input i at design d at [i * n + d]
  /// @param flags   ZEL_SOLVE_... in any combination, see dzel2_solve()
  /// @return the blocks that `flags` select, one behind the other; with the default R * n values,
  ///         output k at design d at [k * n + d]
  std::vector<double> Solve(Span<const double> inputs,
                            unsigned int flags = ZEL_SOLVE_RESPONSES) const {
    std::vector<double> out(GetSize(inputs, flags));
    Solve(inputs, flags, out);
    return out;
  }
  /// The same into memory of the caller, which may be that of `inputs`.
  /// @param out  GetSize(inputs, flags) elements or more
  void Solve(Span<const double> inputs, unsigned int flags, Span<double> out) const {
    Check(dzel2_solve_hash(path_.c_str(), CountDesigns(inputs), inputs.data(),
                           Narrow(inputs.size()), flags, out.data(), Narrow(out.size()), Hash()));
  }

  /// Gradients, densities and errors of one output at n designs.
  /// @param flags  ZEL_RESPONSE_... in any combination, see dzel2_get_per_response()
  /// @return the blocks that `flags` select, one behind the other
  std::vector<double> SolveResponse(const std::string& output, Span<const double> inputs,
                                    unsigned int flags) const {
    std::vector<double> out(GetResponseSize(inputs, flags));
    SolveResponse(output, inputs, flags, out);
    return out;
  }
  /// @param out  GetResponseSize(inputs, flags) elements or more
  void SolveResponse(const std::string& output, Span<const double> inputs, unsigned int flags,
                     Span<double> out) const {
    Check(dzel2_get_per_response_hash(path_.c_str(), CountDesigns(inputs), inputs.data(),
                                      Narrow(inputs.size()), output.c_str(), flags, out.data(),
                                      Narrow(out.size()), Hash()));
  }

  /// Values that Solve() gives.
  std::size_t GetSize(Span<const double> inputs, unsigned int flags) const {
    std::size_t width = 0;
    if ((flags & ZEL_SOLVE_RESPONSES) != 0) width += outputs_.size();
    if ((flags & ZEL_SOLVE_CRITERIA) != 0) width += criteria_.size();
    if ((flags & ZEL_SOLVE_DENSITIES) != 0) width += outputs_.size();
    if ((flags & ZEL_SOLVE_ERRORS) != 0) width += 4 * outputs_.size();
    return width * CountDesigns(inputs);
  }
  /// Values that SolveResponse() gives.
  std::size_t GetResponseSize(Span<const double> inputs, unsigned int flags) const {
    std::size_t width = 0;
    if ((flags & ZEL_RESPONSE_GRADIENTS) != 0) width += inputs_.size();
    if ((flags & ZEL_RESPONSE_DENSITIES) != 0) width += 1;
    if ((flags & ZEL_RESPONSE_ERRORS) != 0) width += 4;
    return width * CountDesigns(inputs);
  }

  /// Closes the files of all projects. @see dzel2_cleanup()
  static void CloseAll() { dzel2_cleanup(); }

 private:
  static Bounds ToBounds(double lower, double upper) {
    constexpr double kNone = std::numeric_limits<double>::max();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return {lower == kNone ? -kInfinity : lower, upper == kNone ? kInfinity : upper};
  }

  [[noreturn]] void Fail(const std::string& text, int status) const {
    throw Error(path_ + ": " + text, status);
  }
  void Check(int status) const {
    if (status == ZEL_OK) return;
    const char* const text = dzel2_getLastError();
    Fail(text != nullptr ? text : "out of memory", status);
  }

  /// Sizes of the C interface are unsigned int.
  unsigned int Narrow(std::size_t size) const {
    if (size > std::numeric_limits<unsigned int>::max())
      Fail(std::to_string(size) + " values are too many for one call", ZEL_BAD_ARGUMENTS);
    return static_cast<unsigned int>(size);
  }
  unsigned int CountDesigns(Span<const double> inputs) const {
    const std::size_t m = inputs_.size();
    if (m == 0 ? inputs.size() > 0 : inputs.size() % m != 0)
      Fail(std::to_string(inputs.size()) + " values are no designs of " + std::to_string(m) +
               " inputs",
           ZEL_BAD_ARGUMENTS);
    return m == 0 ? 0 : Narrow(inputs.size() / m);
  }

  std::vector<std::string> ReadNames(unsigned int flag) const {
    struct Block {
      ~Block() { dzel2_free(names); }
      char* names = nullptr;
    } block;
    Check(dzel2_getNames_hash(path_.c_str(), flag, &block.names, Hash()));
    std::vector<std::string> names;
    for (const char* name = block.names; *name != '\0'; name += names.back().size() + 1)
      names.emplace_back(name);
    return names;
  }

  const char* Hash() const { return hash_.empty() ? nullptr : hash_.c_str(); }

  std::string path_;
  std::string hash_;
  std::vector<std::string> inputs_, outputs_, criteria_;
};

}  // namespace zelsolver

#endif  // ZELSOLVER_ZELSOLVER_HPP
