#ifndef ZELSOLVER_ZELSOLVER_H
#define ZELSOLVER_ZELSOLVER_H

/**
 * @file
 * Predictions from the trained metamodels of a project file (.vrdb), through 81 C functions.
 *
 * Open, ask, solve, clean up:
 *
 *     const char* path = "study.vrdb";
 *     unsigned int dims[2];                            // inputs m, outputs R
 *     if (dzel2_getDimensions(path, ZEL_INPUTS | ZEL_OUTPUTS, dims, 2) != ZEL_OK)
 *       return fail(dzel2_getLastError());             // the first call opens the file
 *
 *     char* names;                                     // "area_1\0area_2\0...\0\0"
 *     dzel2_getNames(path, ZEL_INPUTS, &names);
 *     dzel2_free(names);
 *
 *     double inputs[M * N];                            // input i of design d: inputs[i * N + d]
 *     double out[R * N];                               // output k of design d: out[k * N + d]
 *     dzel2_solve(path, N, inputs, M * N, ZEL_SOLVE_RESPONSES, out, R * N);
 *
 *     dzel2_cleanup();                                 // closes all projects
 *
 *
 * Projects. Every call names its project by path; there is no handle. The first call on a path
 * reads the file and rebuilds its models, later calls find them open. An open project isn't read
 * again, also when the file changes, until dzel2_cleanup() closes all projects. A path is UTF-8 and
 * is taken as it stands: a relative and an absolute spelling of one file open it twice. A null path
 * means "zel_tenbar.vrdb" in the current directory. Project files are never written.
 *
 * Signatures. Each function that takes a path has a second form, `_hash`, with one more argument:
 * the SHA-512 of the file as 128 lower-case hexadecimal characters. The call fails unless the file
 * had this signature when it was opened. A project that was opened with a hash refuses calls
 * without one, and the other way round, until dzel2_cleanup(). A null hash is no hash.
 *
 * Two generations. The functions `dzel2_` tell causes apart by their status and check the sizes of
 * arrays; those named `dzel_` report 0 or 1, and size their arrays by the project's dimensions
 * (dzel_getDimensions()), unchecked. Both do the same work and may be mixed.
 *
 * Status. Functions that return `int` return
 *
 *     0   success
 *     1   `dzel_`: any failure; dzel2_solve() and dzel2_get_per_response(): there are no errors or
 *         densities to deliver
 *     2   `dzel2_`: an error, told by the last-error text: no such file, a damaged file, a wrong
 *         hash, an input out of bounds, an unknown name, a null pointer where data are needed, ...
 *     4   dzel2_set_paths_for_custom_interface(): always
 *     41  `dzel2_`: the arguments don't fit: an array is too small (the text gives both numbers),
 *         or a selector is invalid
 *
 * Last error. One text for the whole process. Every call empties it on entry and every failing call
 * sets it, so that after a success it is null. dzel2_getLastError() returns it; the text lives
 * until the next call into the library. It is UTF-8, but a quoted name may show "?" for a character
 * that the process's C++ locale can't express. The exceptions: the getLastError, get_version_str
 * and set_paths functions leave it as it is. More about the cause of a failed opening stands in the
 * log, on the process's standard output and (errors) standard error, in UTF-8.
 *
 * Outputs after a failure. Memory that the caller passes is written only after everything
 * succeeded, so that a failing call leaves it as it was. dzel2_solve() and dzel2_get_per_response()
 * write in stages and say so.
 *
 * Arrays. All sizes count elements. An array of size 0 may be null; another null pointer is an
 * error (status 2, or 1), except for path and hash. m is the number of inputs, R of outputs, C of
 * criteria, n of designs. Values are in the units of the project. A set of n designs is an array of
 * n * m values, input after input: input i at design d stands at [i * n + d], the inputs in the
 * order of their names.
 *
 * Bounds. Unless a call extrapolates, every input value must lie in the range that the project's
 * designs cover, to within ZEL_BOUNDS_TOLERANCE, or the call fails and names the first value outside. NaN passes,
 * and predictions of it are NaN.
 *
 * Memory. Name lists are allocated for the caller, who releases them with dzel2_free(). The
 * functions `dzel_allocate_and_` hand out a pointer into a buffer of the library instead, one
 * buffer each for solutions, CoP values, filtered states, and bounds: never free it. It lives until
 * the next call that fills the same buffer, whether that succeeds or not, or dzel2_cleanup().
 *
 * Threads. Any function may be called from any thread at any time, dzel2_cleanup() included: a call
 * that has begun finishes on the project that it began with. Each thread has its own buffers, and
 * reads the error of its own last call if that failed, otherwise that of the process's last call.
 * Calls on 1000 designs or more use all processors, or as many threads as the environment variable
 * ZELSOLVER_NUM_THREADS says (1 to 1024) when the call begins.
 */

#if defined(_WIN32)
#define ZEL_API
#elif defined(__GNUC__)
#define ZEL_API __attribute__((visibility("default")))
#else
#define ZEL_API
#endif

/* By how much an input may lie outside of the bounds, in its own unit. */
#define ZEL_BOUNDS_TOLERANCE 1e-8

/* Parameters of a function that takes any arguments. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L)
#define ZEL_ANY_ARGUMENTS ...
#else
#define ZEL_ANY_ARGUMENTS
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Status numbers. */
enum { ZEL_OK = 0, ZEL_FAILED = 1, ZEL_ERROR = 2, ZEL_UNSUPPORTED = 4, ZEL_BAD_ARGUMENTS = 41 };

/** Selectors of dzel2_getDimensions() (any combination) and dzel2_getNames() (one of them). */
enum { ZEL_INPUTS = 1, ZEL_OUTPUTS = 2, ZEL_CRITERIA = 4 };

/** Flags of dzel2_solve(). */
enum {
  ZEL_SOLVE_EXTRAPOLATE = 1, /**< no bounds check */
  ZEL_SOLVE_RESPONSES = 2,
  ZEL_SOLVE_CRITERIA = 4,
  ZEL_SOLVE_DENSITIES = 8,
  ZEL_SOLVE_ERRORS = 16
};

/** Flags of dzel2_get_per_response(). */
enum {
  ZEL_RESPONSE_EXTRAPOLATE = 1, /**< no bounds check */
  ZEL_RESPONSE_GRADIENTS = 2,
  ZEL_RESPONSE_DENSITIES = 4,
  ZEL_RESPONSE_ERRORS = 8
};

/* ---- General -------------------------------------------------------------------------------- */

/**
 * The last-error text, or null when the last call succeeded. Never free it; it lives until the next
 * call into the library.
 */
ZEL_API const char* dzel2_getLastError(void);
/** dzel2_getLastError(); there is one last error for both generations. */
ZEL_API const char* dzel_getLastError(void);

/** The library's version, such as "1.2.3 (456)". Static: never freed, valid for ever. */
ZEL_API const char* dzel2_get_version_str(void);
/** dzel2_get_version_str(). */
ZEL_API const char* dzel_get_version_str(void);

/**
 * Releases a block that the library allocated for the caller, in either generation: the name lists.
 * @param ptr  the block; null is allowed and does nothing
 * @return 0
 */
ZEL_API int dzel2_free(void* ptr);

/**
 * Closes all projects, releases the library's buffers and empties the last error. Pointers of the
 * `dzel_allocate_and_` functions are dead afterwards, name lists are not. The next call on a path
 * reads the file again.
 * @return 0
 */
ZEL_API int dzel2_cleanup(void);
/** dzel2_cleanup(). */
ZEL_API int dzel_cleanup(void);

/**
 * Takes the paths of an interface to custom metamodels, which this library doesn't support.
 * Any arguments are taken and none is read; the last error stays as it is.
 * @return 4
 */
ZEL_API int dzel2_set_paths_for_custom_interface(ZEL_ANY_ARGUMENTS);
/**
 * dzel2_set_paths_for_custom_interface().
 * @return 1
 */
ZEL_API int dzel_set_paths_for_custom_interface(ZEL_ANY_ARGUMENTS);

/* ---- What a project holds ------------------------------------------------------------------- */

/**
 * Whether the project can be opened, which needs at least one metamodel in it.
 * @return 0 when it is open now; else 2
 */
ZEL_API int dzel2_hasSurrogate(const char* path);
/** dzel2_hasSurrogate() of the file with this signature. */
ZEL_API int dzel2_hasSurrogate_hash(const char* path, const char* hash);
/** dzel2_hasSurrogate(). @return 0 or 1 */
ZEL_API int dzel_hasSurrogate(const char* path);
/** dzel_hasSurrogate() of the file with this signature. */
ZEL_API int dzel_hasSurrogate_hash(const char* path, const char* hash);

/**
 * Counts of the project.
 * @param flags      ZEL_INPUTS, ZEL_OUTPUTS, ZEL_CRITERIA in any combination; other bits are
 * ignored
 * @param dims       receives the selected counts, in the order of the bits, without gaps; may be
 *                   null when no bit is set
 * @param dims_size  elements of `dims`, at least the number of these bits
 * @return 0; 2; 41 when `dims` is too small, found before the file is touched
 */
ZEL_API int dzel2_getDimensions(const char* path, unsigned int flags, unsigned int* dims,
                                unsigned int dims_size);
/** dzel2_getDimensions() of the file with this signature. */
ZEL_API int dzel2_getDimensions_hash(const char* path, unsigned int flags, unsigned int* dims,
                                     unsigned int dims_size, const char* hash);

/**
 * Numbers of inputs m and outputs R.
 * @param n_inputs, n_outputs  receive one count each
 * @return 0 or 1
 */
ZEL_API int dzel_getDimensions(const char* path, unsigned int* n_inputs, unsigned int* n_outputs);
/** dzel_getDimensions() of the file with this signature. */
ZEL_API int dzel_getDimensions_hash(const char* path, unsigned int* n_inputs,
                                    unsigned int* n_outputs, const char* hash);

/**
 * The names of the inputs, outputs or criteria in UTF-8: one after the other, each ended by a NUL,
 * with one more NUL behind the last (an empty list is two NULs). An output that is an element of a
 * vector response is called "name[index]", counted from 0.
 * @param flag   exactly one of ZEL_INPUTS, ZEL_OUTPUTS, ZEL_CRITERIA
 * @param names  `*names` receives a new block, which the caller releases with dzel2_free()
 * @return 0; 2; 41 for another flag
 */
ZEL_API int dzel2_getNames(const char* path, unsigned int flag, char** names);
/** dzel2_getNames() of the file with this signature. */
ZEL_API int dzel2_getNames_hash(const char* path, unsigned int flag, char** names,
                                const char* hash);

/**
 * dzel2_getNames() with `delimiter` between two names instead of a NUL; two NULs end the block.
 * @param delimiter  any text; empty or null gives the block of dzel2_getNames()
 */
ZEL_API int dzel2_getNamesWithDelimiter(const char* path, unsigned int flag, char** names,
                                        const char* delimiter);
/** dzel2_getNamesWithDelimiter() of the file with this signature. */
ZEL_API int dzel2_getNamesWithDelimiter_hash(const char* path, unsigned int flag, char** names,
                                             const char* delimiter, const char* hash);

/** dzel2_getNames() of the inputs; release `*names` with dzel2_free(). @return 0 or 1 */
ZEL_API int dzel_getInputNames(const char* path, char** names);
/** dzel_getInputNames() of the file with this signature. */
ZEL_API int dzel_getInputNames_hash(const char* path, char** names, const char* hash);
/** dzel2_getNames() of the outputs; release `*names` with dzel2_free(). @return 0 or 1 */
ZEL_API int dzel_getOutputNames(const char* path, char** names);
/** dzel_getOutputNames() of the file with this signature. */
ZEL_API int dzel_getOutputNames_hash(const char* path, char** names, const char* hash);
/** dzel2_getNamesWithDelimiter() of the inputs. @return 0 or 1 */
ZEL_API int dzel_getInputNamesWithDelimiter(const char* path, char** names, const char* delimiter);
/** dzel_getInputNamesWithDelimiter() of the file with this signature. */
ZEL_API int dzel_getInputNamesWithDelimiter_hash(const char* path, char** names,
                                                 const char* delimiter, const char* hash);
/** dzel2_getNamesWithDelimiter() of the outputs. @return 0 or 1 */
ZEL_API int dzel_getOutputNamesWithDelimiter(const char* path, char** names, const char* delimiter);
/** dzel_getOutputNamesWithDelimiter() of the file with this signature. */
ZEL_API int dzel_getOutputNamesWithDelimiter_hash(const char* path, char** names,
                                                  const char* delimiter, const char* hash);

/**
 * The range of each input in the project's designs: what a call without extrapolation accepts.
 * @param bounds  receives 2 * m values: lower and upper bound of input 0, of input 1, ... A bound
 *                that is no number is the largest finite double
 * @return 0 or 2
 */
ZEL_API int dzel2_getInputBounds(const char* path, double* bounds);
/** dzel2_getInputBounds() of the file with this signature. */
ZEL_API int dzel2_getInputBounds_hash(const char* path, double* bounds, const char* hash);
/** dzel2_getInputBounds(). @return 0 or 1 */
ZEL_API int dzel_getInputBounds(const char* path, double* bounds);
/** dzel_getInputBounds() of the file with this signature. */
ZEL_API int dzel_getInputBounds_hash(const char* path, double* bounds, const char* hash);
/**
 * dzel2_getInputBounds() in the library's buffer of bounds.
 * @param bounds  `*bounds` receives a pointer to the 2 * m values; never free it
 * @return 0 or 1
 */
ZEL_API int dzel_allocate_and_getInputBounds(const char* path, double** bounds);
/** dzel_allocate_and_getInputBounds() of the file with this signature. */
ZEL_API int dzel_allocate_and_getInputBounds_hash(const char* path, double** bounds,
                                                  const char* hash);

/**
 * The range of one parameter in the project's designs. The parameter need not be an input of the
 * models; a constant one has no bounds and is an error.
 * @param parameter  its name in UTF-8
 * @param bounds     receives 2 values: lower and upper bound
 * @return 0 or 2
 */
ZEL_API int dzel2_getInputBoundsPerParameter(const char* path, const char* parameter,
                                             double* bounds);
/** dzel2_getInputBoundsPerParameter() of the file with this signature. */
ZEL_API int dzel2_getInputBoundsPerParameter_hash(const char* path, const char* parameter,
                                                  double* bounds, const char* hash);
/** dzel2_getInputBoundsPerParameter(). @return 0 or 1 */
ZEL_API int dzel_getInputBoundsPerParameter(const char* path, const char* parameter,
                                            double* bounds);
/** dzel_getInputBoundsPerParameter() of the file with this signature. */
ZEL_API int dzel_getInputBoundsPerParameter_hash(const char* path, const char* parameter,
                                                 double* bounds, const char* hash);
/**
 * dzel2_getInputBoundsPerParameter() in the library's buffer of bounds, which
 * dzel_allocate_and_getInputBounds() shares.
 * @param bounds  `*bounds` receives a pointer to the 2 values; never free it
 * @return 0 or 1
 */
ZEL_API int dzel_allocate_and_getInputBoundsPerParameter(const char* path, const char* parameter,
                                                         double** bounds);
/** dzel_allocate_and_getInputBoundsPerParameter() of the file with this signature. */
ZEL_API int dzel_allocate_and_getInputBoundsPerParameter_hash(const char* path,
                                                              const char* parameter,
                                                              double** bounds, const char* hash);

/**
 * The reference (nominal) value of one parameter, input of the models or not.
 * @param parameter  its name in UTF-8
 * @param value      receives 1 value; NaN when none is set, 0 or 1 for a boolean
 * @return 0 or 2
 */
ZEL_API int dzel2_getReferenceValuePerParameter(const char* path, const char* parameter,
                                                double* value);
/** dzel2_getReferenceValuePerParameter() of the file with this signature. */
ZEL_API int dzel2_getReferenceValuePerParameter_hash(const char* path, const char* parameter,
                                                     double* value, const char* hash);
/** dzel2_getReferenceValuePerParameter(). @return 0 or 1 */
ZEL_API int dzel_getReferenceValuePerParameter(const char* path, const char* parameter,
                                               double* value);
/** dzel_getReferenceValuePerParameter() of the file with this signature. */
ZEL_API int dzel_getReferenceValuePerParameter_hash(const char* path, const char* parameter,
                                                    double* value, const char* hash);

/**
 * The coefficients of prognosis (CoP) of a response's model, as stored at its training: how much of
 * the response's variation the model predicts, and the share of each input in it.
 * @param response  an output's name in UTF-8
 * @param values    receives m + 1 values: the single CoP of each input, then the total CoP; -1.0
 *                  for one that the project doesn't hold
 * @return 0 or 2
 */
ZEL_API int dzel2_getCoPValuesPerResponse(const char* path, const char* response, double* values);
/** dzel2_getCoPValuesPerResponse() of the file with this signature. */
ZEL_API int dzel2_getCoPValuesPerResponse_hash(const char* path, const char* response,
                                               double* values, const char* hash);
/** dzel2_getCoPValuesPerResponse(). @return 0 or 1 */
ZEL_API int dzel_getCoPValuesPerResponse(const char* path, const char* response, double* values);
/** dzel_getCoPValuesPerResponse() of the file with this signature. */
ZEL_API int dzel_getCoPValuesPerResponse_hash(const char* path, const char* response,
                                              double* values, const char* hash);
/**
 * dzel2_getCoPValuesPerResponse() in the library's buffer of CoP values.
 * @param values  `*values` receives a pointer to the m + 1 values; never free it
 * @return 0 or 1
 */
ZEL_API int dzel_allocate_and_getCoPValuesPerResponse(const char* path, const char* response,
                                                      double** values);
/** dzel_allocate_and_getCoPValuesPerResponse() of the file with this signature. */
ZEL_API int dzel_allocate_and_getCoPValuesPerResponse_hash(const char* path, const char* response,
                                                           double** values, const char* hash);

/**
 * Which inputs a response's model ignores.
 * @param response  an output's name in UTF-8
 * @param states    receives m + 1 values: for each input 1 when the model doesn't use it, else 0;
 *                  then 1 when the project holds no total CoP of the response, else 0
 * @return 0 or 2
 */
ZEL_API int dzel2_getFilteredStatesPerResponse(const char* path, const char* response,
                                               unsigned int* states);
/** dzel2_getFilteredStatesPerResponse() of the file with this signature. */
ZEL_API int dzel2_getFilteredStatesPerResponse_hash(const char* path, const char* response,
                                                    unsigned int* states, const char* hash);
/** dzel2_getFilteredStatesPerResponse(). @return 0 or 1 */
ZEL_API int dzel_getFilteredStatesPerResponse(const char* path, const char* response,
                                              unsigned int* states);
/** dzel_getFilteredStatesPerResponse() of the file with this signature. */
ZEL_API int dzel_getFilteredStatesPerResponse_hash(const char* path, const char* response,
                                                   unsigned int* states, const char* hash);
/**
 * dzel2_getFilteredStatesPerResponse() in the library's buffer of states.
 * @param states  `*states` receives a pointer to the m + 1 values; never free it
 * @return 0 or 1
 */
ZEL_API int dzel_allocate_and_getFilteredStatesPerResponse(const char* path, const char* response,
                                                           unsigned int** states);
/** dzel_allocate_and_getFilteredStatesPerResponse() of the file with this signature. */
ZEL_API int dzel_allocate_and_getFilteredStatesPerResponse_hash(const char* path,
                                                                const char* response,
                                                                unsigned int** states,
                                                                const char* hash);

/* ---- Predictions ---------------------------------------------------------------------------- */

/**
 * Predicts at n designs. The blocks that `flags` selects go to `out` in this order, without gaps:
 *
 *     flag                   values      layout
 *     ZEL_SOLVE_RESPONSES    R * n       output k at design d:     [k * n + d]
 *     ZEL_SOLVE_CRITERIA     C * n       criterion k at design d:  [d * C + k]
 *     ZEL_SOLVE_DENSITIES    R * n       output k at design d:     [k * n + d]
 *     ZEL_SOLVE_ERRORS       4 * R * n   output k at design d:     [4 * (k * n + d)], 4 values:
 *                                        local coefficient of prognosis, root mean square error,
 *                                        mean error, mean absolute error
 *
 * Outputs and criteria stand in the order of their names. The density tells how closely a model's
 * support points lie around the design; the errors are the cross-validated errors of the support
 * points around it, in the units of the response (the first is a ratio). What can't be computed is
 * NaN in its place, and the call still succeeds: a response whose model fails, a criterion without
 * a number, density and errors of outputs that aren't covered by models in all their elements.
 * Without any of the four flags the sizes are checked, and nothing is computed.
 *
 * @param n_designs    n
 * @param inputs       n * m values, input i at design d at [i * n + d]
 * @param inputs_size  elements of `inputs`, at least n * m; what lies behind is ignored
 * @param flags        ZEL_SOLVE_... in any combination
 * @param out          receives the blocks
 * @param out_size     elements of `out`, at least their sum; what lies behind is left alone
 * @return 0; 2, for example for an input out of bounds; 41 for a size; 1 when densities or errors
 *         are asked for and no output has any, or n is 0. After a failure `out` is as it was, with
 *         one exception: when densities or errors fail, or memory runs out, blocks before that
 *         have been written. `out` may be the memory of `inputs`.
 */
ZEL_API int dzel2_solve(const char* path, unsigned int n_designs, const double* inputs,
                        unsigned int inputs_size, unsigned int flags, double* out,
                        unsigned int out_size);
/** dzel2_solve() of the file with this signature. */
ZEL_API int dzel2_solve_hash(const char* path, unsigned int n_designs, const double* inputs,
                             unsigned int inputs_size, unsigned int flags, double* out,
                             unsigned int out_size, const char* hash);

/**
 * Predicts the responses at n designs, inside the bounds.
 * @param inputs  n * m values, input i at design d at [i * n + d]; the size isn't checked
 * @param out     receives R * n values, output k at design d at [k * n + d]; NaN for what a model
 *                can't predict
 * @return 0 or 1
 */
ZEL_API int dzel_solve(const char* path, unsigned int n_designs, const double* inputs, double* out);
/** dzel_solve() of the file with this signature. */
ZEL_API int dzel_solve_hash(const char* path, unsigned int n_designs, const double* inputs,
                            double* out, const char* hash);
/**
 * dzel_solve(), outside the bounds too.
 * @param extrapolate  not 0: no bounds check
 */
ZEL_API int dzel_solve_extrapolate(const char* path, unsigned int n_designs, const double* inputs,
                                   double* out, unsigned int extrapolate);
/** dzel_solve_extrapolate() of the file with this signature. */
ZEL_API int dzel_solve_extrapolate_hash(const char* path, unsigned int n_designs,
                                        const double* inputs, double* out, unsigned int extrapolate,
                                        const char* hash);

/**
 * dzel_solve() in the library's buffer of solutions.
 * @param out  `*out` receives a pointer to the R * n values; never free it
 * @return 0 or 1; 1 also when there is nothing to deliver (R or n is 0)
 */
ZEL_API int dzel_allocate_and_solve(const char* path, unsigned int n_designs, const double* inputs,
                                    double** out);
/** dzel_allocate_and_solve() of the file with this signature. */
ZEL_API int dzel_allocate_and_solve_hash(const char* path, unsigned int n_designs,
                                         const double* inputs, double** out, const char* hash);
/**
 * dzel_allocate_and_solve(), outside the bounds too.
 * @param extrapolate  not 0: no bounds check
 */
ZEL_API int dzel_allocate_and_solve_extrapolate(const char* path, unsigned int n_designs,
                                                const double* inputs, double** out,
                                                unsigned int extrapolate);
/** dzel_allocate_and_solve_extrapolate() of the file with this signature. */
ZEL_API int dzel_allocate_and_solve_extrapolate_hash(const char* path, unsigned int n_designs,
                                                     const double* inputs, double** out,
                                                     unsigned int extrapolate, const char* hash);

/* ---- One response --------------------------------------------------------------------------- */

/**
 * Gradients, densities and errors of one response at n designs. The blocks that `flags` selects go
 * to `out` in this order, without gaps:
 *
 *     flag                     values  layout
 *     ZEL_RESPONSE_GRADIENTS   m * n   by input i at design d: [d * m + i], in the units of both;
 *                                      0 for an input that the model doesn't use
 *     ZEL_RESPONSE_DENSITIES   n       design d: [d]
 *     ZEL_RESPONSE_ERRORS      4 * n   design d: [4 * d], 4 values as in dzel2_solve()
 *
 * @param n_designs    n
 * @param inputs       n * m values, input i at design d at [i * n + d]
 * @param inputs_size  elements of `inputs`, at least n * m; what lies behind is ignored
 * @param response     an output's name in UTF-8
 * @param flags        ZEL_RESPONSE_... in any combination
 * @param out          receives the blocks
 * @param out_size     elements of `out`, at least their sum; what lies behind is left alone
 * @return 0; 2, for example for an unknown response or an input out of bounds; 41 for a size; 1
 *         when densities or errors are asked for and n is 0. After a failure `out` is as it was,
 *         with one exception: when densities or errors fail, the gradients have been written.
 */
ZEL_API int dzel2_get_per_response(const char* path, unsigned int n_designs, const double* inputs,
                                   unsigned int inputs_size, const char* response,
                                   unsigned int flags, double* out, unsigned int out_size);
/** dzel2_get_per_response() of the file with this signature. */
ZEL_API int dzel2_get_per_response_hash(const char* path, unsigned int n_designs,
                                        const double* inputs, unsigned int inputs_size,
                                        const char* response, unsigned int flags, double* out,
                                        unsigned int out_size, const char* hash);

/**
 * The gradients of one response at n designs, inside the bounds.
 * @param inputs    n * m values, input i at design d at [i * n + d]; the size isn't checked
 * @param response  an output's name in UTF-8
 * @param out       receives m * n values, by input i at design d at [d * m + i]
 * @return 0 or 1
 */
ZEL_API int dzel_gradients_per_response(const char* path, unsigned int n_designs,
                                        const double* inputs, const char* response, double* out);
/** dzel_gradients_per_response() of the file with this signature. */
ZEL_API int dzel_gradients_per_response_hash(const char* path, unsigned int n_designs,
                                             const double* inputs, const char* response,
                                             double* out, const char* hash);
/** dzel_gradients_per_response(). @param extrapolate  not 0: no bounds check */
ZEL_API int dzel_gradients_per_response_extrapolate(const char* path, unsigned int n_designs,
                                                    const double* inputs, const char* response,
                                                    double* out, unsigned int extrapolate);
/** dzel_gradients_per_response_extrapolate() of the file with this signature. */
ZEL_API int dzel_gradients_per_response_extrapolate_hash(const char* path, unsigned int n_designs,
                                                         const double* inputs, const char* response,
                                                         double* out, unsigned int extrapolate,
                                                         const char* hash);

/**
 * The local errors of one response's model at n designs, inside the bounds.
 * @param inputs    n * m values, input i at design d at [i * n + d]; the size isn't checked
 * @param response  an output's name in UTF-8
 * @param out       receives 4 * n values, four for each design as in dzel2_solve()
 * @return 0 or 1
 */
ZEL_API int dzel_errors_per_response(const char* path, unsigned int n_designs, const double* inputs,
                                     const char* response, double* out);
/** dzel_errors_per_response() of the file with this signature. */
ZEL_API int dzel_errors_per_response_hash(const char* path, unsigned int n_designs,
                                          const double* inputs, const char* response, double* out,
                                          const char* hash);
/** dzel_errors_per_response(). @param extrapolate  not 0: no bounds check */
ZEL_API int dzel_errors_per_response_extrapolate(const char* path, unsigned int n_designs,
                                                 const double* inputs, const char* response,
                                                 double* out, unsigned int extrapolate);
/** dzel_errors_per_response_extrapolate() of the file with this signature. */
ZEL_API int dzel_errors_per_response_extrapolate_hash(const char* path, unsigned int n_designs,
                                                      const double* inputs, const char* response,
                                                      double* out, unsigned int extrapolate,
                                                      const char* hash);

/**
 * The density of the support points of one response's model at n designs, inside the bounds.
 * @param inputs    n * m values, input i at design d at [i * n + d]; the size isn't checked
 * @param response  an output's name in UTF-8
 * @param out       receives n values
 * @param out_size  elements of `out`, at least n
 * @return 0 or 1; 1 also when `out` is too small
 */
ZEL_API int dzel_density_per_response(const char* path, unsigned int n_designs,
                                      const double* inputs, const char* response, double* out,
                                      unsigned int out_size);
/** dzel_density_per_response() of the file with this signature. */
ZEL_API int dzel_density_per_response_hash(const char* path, unsigned int n_designs,
                                           const double* inputs, const char* response, double* out,
                                           unsigned int out_size, const char* hash);
/** dzel_density_per_response(). @param extrapolate  not 0: no bounds check */
ZEL_API int dzel_density_per_response_extrapolate(const char* path, unsigned int n_designs,
                                                  const double* inputs, const char* response,
                                                  double* out, unsigned int out_size,
                                                  unsigned int extrapolate);
/** dzel_density_per_response_extrapolate() of the file with this signature. */
ZEL_API int dzel_density_per_response_extrapolate_hash(const char* path, unsigned int n_designs,
                                                       const double* inputs, const char* response,
                                                       double* out, unsigned int out_size,
                                                       unsigned int extrapolate, const char* hash);

#ifdef __cplusplus
}
#endif

#endif /* ZELSOLVER_ZELSOLVER_H */
