#ifndef ZELSOLVER_STUDY_H
#define ZELSOLVER_STUDY_H

/**
 * @file
 * Everything that the program `zel` does, for any language that calls C: tables of designs, training,
 * samples, what a project holds, residuals, predictions by name, expressions.
 *
 *     zelstudy_table* table;
 *     zelstudy_table_new(&table);
 *     zelstudy_table_add_numbers(table, "x", x, n);
 *     zelstudy_table_add_numbers(table, "y", y, n);
 *
 *     zelstudy_project* project;
 *     zelstudy_result* result;
 *     if (zelstudy_train(table, "{\"inputs\": [\"x\"], \"responses\": [\"y\"]}", NULL, NULL, &project,
 *                        &result) != ZELSTUDY_OK)
 *       return fail(zelstudy_last_error());
 *     puts(zelstudy_result_json(result));               // CoP, model, candidates, notes
 *     zelstudy_project_save(project, "study.vrdb");
 *     zelstudy_result_close(result);
 *
 *     const double at[] = {0.5, 1.5};                   // two designs of one input
 *     zelstudy_solve(project, NULL, at, 2, NULL, NULL, &result);
 *     const double* y_at;                               // rows x columns, row after row
 *     size_t rows, columns;
 *     zelstudy_result_array(result, "responses", &y_at, &rows, &columns);
 *
 *     zelstudy_result_close(result);
 *     zelstudy_project_close(project);
 *     zelstudy_table_close(table);
 *
 *
 * Status. Every function that returns `int` returns ZELSTUDY_OK, or says in zelstudy_last_error()
 * why not: ZELSTUDY_REFUSED for anything that a caller can mend (a bad file, name, number, option, a
 * null pointer), ZELSTUDY_CANCELLED when the caller's progress function said so, ZELSTUDY_FAILED for
 * lack of memory and faults inside. A call that does not return ZELSTUDY_OK changes nothing: handles
 * that were passed in stay as they were, `*out` becomes null.
 *
 * Last error. One text per thread, UTF-8, about the thread's last call; null after a call that
 * succeeded. It lives until the thread's next call that returns a status.
 *
 * Handles. A table, a project and a result are opaque; each is closed once by its _close function,
 * which takes null as well. Texts and arrays that a handle gives out live as long as the handle
 * (those of a table or project: until it is changed). A table belongs to one thread at a time;
 * projects and results do not change and may be shared by threads.
 *
 * Options. A JSON object as UTF-8 text; null or "" stands for {}. Every option has a default. A key
 * that the function does not know, and a value of another type, are refused by name. A number may be
 * written in any form of JSON; an option that takes NAMES takes an array of texts.
 *
 * Results. A JSON document (zelstudy_result_json) and arrays with names (zelstudy_result_array). What
 * stands in the document is told at each function; documents may get further keys in later
 * versions. A number that there is not (nan, infinity) is null in JSON and NaN in arrays.
 *
 * Progress. A function of the caller's that is called at the beginning and, in long work, up to some
 * twenty times a second, on the thread of the call, with
 * the share of the work that is done (0 to 1; negative while it is not known) and what is in work
 * (UTF-8, for people; it lives during the call). A return value other than 0 cancels. It must not
 * throw or jump. Null is allowed.
 *
 * Threads. Long work uses all processors, or as many threads as the environment variable
 * ZELSOLVER_NUM_THREADS says (1 to 1024); results do not depend on their number. Warnings about a
 * project's data go to the process's standard output and error, as those of libzelsolver do.
 *
 * m is the number of inputs, R of responses, C of criteria, n of designs.
 */

#include <stddef.h>

#if defined(_WIN32)
#define ZELSTUDY_API
#elif defined(__GNUC__)
#define ZELSTUDY_API __attribute__((visibility("default")))
#else
#define ZELSTUDY_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Status numbers. */
enum { ZELSTUDY_OK = 0, ZELSTUDY_REFUSED = 1, ZELSTUDY_CANCELLED = 2, ZELSTUDY_FAILED = 3 };

/** Columns of designs, as measured or simulated. */
typedef struct zelstudy_table zelstudy_table;
/** What a project file holds, with its models ready for use. */
typedef struct zelstudy_project zelstudy_project;
/** What a call found: a JSON document and arrays. */
typedef struct zelstudy_result zelstudy_result;

/** @param share  0 to 1, or negative; @param text  what is in work; @return 0 to go on */
typedef int (*zelstudy_progress)(double share, const char* text, void* user);

/** Why this thread's last call failed; null if it did not. Never free it. */
ZELSTUDY_API const char* zelstudy_last_error(void);
/** The library's version, such as "1.2.3 (456)". Static. Leaves the last error as it is. */
ZELSTUDY_API const char* zelstudy_version(void);

/* ---- Results -------------------------------------------------------------------------------- */

/** The JSON document, UTF-8; null for a null result. Leaves the last error as it is. */
ZELSTUDY_API const char* zelstudy_result_json(const zelstudy_result* result);
/**
 * An array of the result: rows * columns values, row after row.
 * @param data, rows, columns  receive it; an array without values may be null
 * @return ZELSTUDY_REFUSED when there is no array of that name: the text names those that there are
 */
ZELSTUDY_API int zelstudy_result_array(const zelstudy_result* result, const char* name,
                                       const double** data, size_t* rows, size_t* columns);
/** The name of an array, from 0; null beyond the last. Leaves the last error as it is. */
ZELSTUDY_API const char* zelstudy_result_array_name(const zelstudy_result* result, size_t index);
ZELSTUDY_API void zelstudy_result_close(zelstudy_result* result);

/* ---- Tables --------------------------------------------------------------------------------- */

/** A table without columns. */
ZELSTUDY_API int zelstudy_table_new(zelstudy_table** out);
/**
 * Appends a column of numbers, which are copied. NaN says that a value is missing: a design that
 * failed for a response.
 * @param n  values, as many as the columns that the table has
 */
ZELSTUDY_API int zelstudy_table_add_numbers(zelstudy_table* table, const char* name,
                                            const double* values, size_t n);
/**
 * Appends a column of texts (UTF-8), which are copied: words, dates, or numbers as text. A null says
 * that a value is missing.
 */
ZELSTUDY_API int zelstudy_table_add_texts(zelstudy_table* table, const char* name,
                                          const char* const* values, size_t n);
/** Gives a column its unit; null or "" takes it away. */
ZELSTUDY_API int zelstudy_table_set_unit(zelstudy_table* table, const char* name, const char* unit);
/**
 * Reads a CSV as `zel train` does: header row; commas, semicolons or tabs; decimal commas; UTF-8,
 * UTF-16 or Latin-1; a row of units; comments.
 * @param options  none yet
 */
ZELSTUDY_API int zelstudy_table_read_csv(const char* path, const char* options,
                                         zelstudy_table** out);
/**
 * What the table holds.
 *
 *     {"name": "study.csv", "rows": 60, "notes": ["read with semicolons ..."],
 *      "columns": [{"name": "x", "kind": "numbers" or "texts", "missing": 0, "unit": "mm"}, ...]}
 *
 * "unit" stands there where there is one. Arrays: each column of numbers, under its name, rows x 1.
 */
ZELSTUDY_API int zelstudy_table_describe(const zelstudy_table* table, zelstudy_result** out);
ZELSTUDY_API void zelstudy_table_close(zelstudy_table* table);

/* ---- Projects ------------------------------------------------------------------------------- */

/**
 * Opens a project file (.vrdb). The file is read once and closed.
 * @param hash  its SHA-512 as zelstudy_hash() tells it; another file is refused. Null: not checked
 */
ZELSTUDY_API int zelstudy_project_open(const char* path, const char* hash, zelstudy_project** out);
/** Opens the bytes of a project file, which are copied. */
ZELSTUDY_API int zelstudy_project_from_bytes(const void* bytes, size_t size,
                                             zelstudy_project** out);
/** The bytes of the project file, exactly as they were read, or as a training made them. */
ZELSTUDY_API int zelstudy_project_bytes(const zelstudy_project* project, const void** bytes,
                                        size_t* size);
/**
 * Writes these bytes to a file. It takes the place of an old one in one step; after a failure the
 * old one is still there.
 */
ZELSTUDY_API int zelstudy_project_save(const zelstudy_project* project, const char* path);
ZELSTUDY_API void zelstudy_project_close(zelstudy_project* project);

/* ---- Training ------------------------------------------------------------------------------- */

/**
 * Trains a model for each response; see `zel train` and docs/train.md.
 *
 * Options:
 *     "inputs": NAMES         columns, patterns such as "x_*", or "all"; must be given
 *     "responses": NAMES      columns or patterns; must be given
 *     "ignored": NAMES        columns that patterns and "all" leave out
 *     "discrete": NAMES       inputs that take the table's values and no others
 *     "dates": NAMES          columns of dates
 *     "criteria": NAMES       "cost: 3*mass + load", "limit: stress <= 25"
 *     "skip_incomplete": false  leave rows out that lack an input
 *     "seed": 1               of the cross-validation, 0 to 4294967295
 *     "budget": 60.0          of the training, in seconds of one core; counted in operations, so
 *                             that one budget gives the same models on every machine
 *
 * Result, as `zel train --json`:
 *
 *     {"table": "table", "designs": 60, "notes": ["..."],
 *      "inputs": [{"name": "x", "unit": "mm", "words": ["brass", "steel"], ...}],
 *      "responses": [{"name": "y", "model": "Isotropic Kriging", "cop": 0.98, "raw_cop": 0.981,
 *        "noise": null, "cod": 0.99, "cod_adjusted": 0.99, "designs": 60,
 *        "inputs": [{"name": "x", "single_cop": 0.9}],
 *        "candidates": [CANDIDATE, ...]}]}
 *
 *     CANDIDATE: {"family": "Linear Regression", "order": 2, "interactions": true, "ridge": false,
 *       "box_cox": false, "inputs": ["x"], "cop": 0.9, "cop_adjusted": 0.9, "cod": 0.9,
 *       "cod_adjusted": 0.9, "rmse": 0.1, "chosen": false}
 *
 * Messages count the rows of a table of columns from 0, those of a CSV as a spreadsheet does.
 * @param project  receives the trained project
 */
ZELSTUDY_API int zelstudy_train(const zelstudy_table* table, const char* options,
                                zelstudy_progress progress, void* user, zelstudy_project** project,
                                zelstudy_result** out);

/* ---- What a project holds ------------------------------------------------------------------- */

/**
 * Describes the project.
 *
 * Options:
 *     "candidates": false     add to each response the models that competed for it
 *     "models": false         add to each response the "formula" of its model, or a text that says that
 *                             it has none
 *
 * Result, as `zel info --json`:
 *
 *     {"project": "study.vrdb",          null when it came from bytes or from a training
 *      "inputs": [{"name": "x", "lower": 0.0, "upper": 1.0, "reference": 0.5, "unit": "mm",
 *        "states": [0, 1], "words": ["brass", "steel"], "days_since": "1970-01-01",
 *        "slashes": "day/month/year", "title": "x [mm]",
 *        "distribution": {"type": "Normal", "parameters": {"mu": 1.0}, "moments": {"mean": 1.0}}}],
 *      "correlations": [{"inputs": ["x", "z"], "coefficient": 0.5}],
 *      "responses": [{"name": "y", "cop": 0.98, "model": "...", "description": "...",
 *        "inputs": [{"name": "x", "single_cop": 0.9}], "candidates": [CANDIDATE, ...]}],
 *      "criteria": [{"name": "limit", "limit": true, "value": "stress <= 25"}]}
 *
 * Keys of an input that does not have such are left out; a response lists the inputs that it uses. The
 * states of a discrete input are what models take: numbers, of words their codes, by "words".
 *
 * Arrays:
 *     "bounds"        m x 2   lower and upper ends of the designs; NaN where there are none
 *     "reference"     m x 1   reference values
 *     "cops"          R x 1   NaN where the project has none
 *     "single_cops"   R x m   likewise; NaN for an input that the model does not use
 *     "correlations"  m x m   of the inputs
 */
ZELSTUDY_API int zelstudy_describe(const zelstudy_project* project, const char* options,
                                   zelstudy_result** out);

/**
 * What the models predict at the designs that they were trained on, each design predicted without
 * itself (cross-validation).
 *
 * Options:
 *     "responses": NAMES      those wanted; all by default
 *
 * Result:
 *
 *     {"inputs": ["x"], "responses": [{"name": "y", "designs": 60, "rmse": 0.1,
 *        "note": "..."}]}
 *
 * "note" stands where a response has no residuals, and says why; its arrays are then empty.
 * Arrays, of each response with N designs:
 *     "y/measured"    N x 1
 *     "y/predicted"   N x 1   without the design itself
 *     "y/designs"     N x 1   numbers of the designs, from 1, as the project counts them; NaN where
 *                             it does not tell
 *     "y/inputs"      N x m
 */
ZELSTUDY_API int zelstudy_residuals(const zelstudy_project* project, const char* options,
                                    zelstudy_result** out);

/* ---- Predictions ---------------------------------------------------------------------------- */

/**
 * Predicts at n designs. NaN passes, and predictions of it are NaN. A design that lies further out than `zel solve` accepts is refused.
 *
 * Options:
 *     "responses": NAMES      those wanted; all by default
 *     "criteria": false       add the criteria
 *     "errors": false         add the errors around each design; true, or NAMES of responses
 *     "densities": false      add the density of support points; true, or NAMES
 *     "gradients": false      add the gradients; true, or NAMES
 *     "extrapolate": false    predict anywhere
 *
 * Result:
 *
 *     {"inputs": ["x"], "responses": ["y"], "criteria": ["limit"],
 *      "outside": [{"input": "x", "designs": 3}], "notes": ["..."]}
 *
 * "outside" counts designs outside of the range of the project's designs. Arrays, each of n rows:
 *     "responses"     n x R   in the order of "responses"; NaN where a model has no prediction
 *     "criteria"      n x C   where asked for
 *     "y/errors"      n x 4   local CoP, root mean square, mean and mean absolute error
 *     "y/density"     n x 1
 *     "y/gradients"   n x m   in units of the response per unit of the input
 * What a model cannot tell is NaN, and a note says why.
 * @param inputs  n * m values, design after design, the inputs in the order of zelstudy_describe()
 */
ZELSTUDY_API int zelstudy_solve(const zelstudy_project* project, const char* options,
                                const double* inputs, size_t n, zelstudy_progress progress,
                                void* user, zelstudy_result** out);

/**
 * Predicts at each row of a CSV, in blocks: memory does not grow with the rows.
 *
 * Options:
 *     "in": "designs.csv"     must be given; its header row names the inputs
 *     "out": "result.csv"     must be given; takes the place of an old file in one step
 *     "criteria", "errors", "densities": false, "gradients": NAMES, "extrapolate": false
 *                             as for `zel solve`
 * Result: {"designs": 1000, "outside": [...], "notes": [...]}, as zelstudy_solve()'s.
 */
ZELSTUDY_API int zelstudy_solve_csv(const zelstudy_project* project, const char* options,
                                    zelstudy_progress progress, void* user, zelstudy_result** out);

/* ---- Optima --------------------------------------------------------------------------------- */

/**
 * Finds the best design on the models of a project; see `zel optimize` and docs/decide.md.
 *
 * Options:
 *     "minimize": NAMES, "maximize": NAMES   responses, criteria or expressions; one for an optimum,
 *                             two or three for a Pareto front
 *     "limits": NAMES         "max(abs(stress)) <= 20", also with "name:" in front
 *     "project_limits": true  whether the limit criteria of the project count
 *     "bounds": NAMES         "x:0:10" in place of the range of the analysed designs; "x=5" holds the
 *                             mean of an input
 *     "fixed": NAMES          "x=5": it neither moves nor scatters
 *     "robust": 0             standard deviations of the scatter that limits are kept with
 *     "distributions": NAMES  "x:normal(12, 0.6)", for "robust"
 *     "seed": 1, "starts": 40 of the searches
 *     "points": 0             of a front; 0: by the number of objectives
 *     "next": 0               designs to propose for analysis, instead of an optimum
 *     "next_by": "improvement"  or "error", which needs no objective
 *
 * Result: {"status": "optimal", "inputs": {"x": 5}, "quantities": {"y": 7}, "errors": {"y": 0.1},
 *          "limits": {"l": {"reserve": 0, "active": true, "multiplier": 2, "error": 0.1}},
 *          "bounds": {"x": {"end": "upper", "multiplier": 3}}, "trusted": true, "trust": {...},
 *          "nearest": [{"design": "17", "distance": 0.2, ...}], "notes": [...]}. The status is
 *     optimal     a design that keeps all limits and meets the conditions of optimality
 *     feasible    a design that keeps all limits; the search stopped before it was sure
 *     infeasible  no design keeps all limits: "violation" says which is missed least and by how much
 *     failed      no design has a value for every objective and limit
 *     front       {"front": [{"inputs": ..., "quantities": ..., "objectives": ...}]}
 *     proposed    {"next": [{"inputs": ..., "improvement": 3, "chance": 0.9, "prediction": 7}]}
 * "infeasible" and "failed" come with a "message"; they are results, not refusals.
 * Array "designs": the optimum, front or proposal in rows, named by "columns": inputs, then all
 * responses and criteria.
 */
ZELSTUDY_API int zelstudy_optimize(const zelstudy_project* project, const char* options,
                                   zelstudy_progress progress, void* user, zelstudy_result** out);

/* ---- Samples -------------------------------------------------------------------------------- */

/**
 * Makes points at which to evaluate a study; see `zel sample` and docs/sampling.md.
 *
 * Options:
 *     "scheme": "sobol-sequence"  its name or the beginning of it; must be given
 *     "n": 100                number of points, levels or degree, as the scheme wants it
 *     "seed": 1               0 to 4294967295
 *     "inputs": NAMES         "x:0:10", "material:{brass;steel}"; in place of a project
 *
 * Result: {"scheme": "sobol-sequence", "inputs": [{"name": "x", "words": [...]}]}.
 * Array "points", n x m, in the units of the inputs; words are their codes 0, 1, ...
 * @param project  whose inputs are sampled, by their bounds or distributions; or null
 */
ZELSTUDY_API int zelstudy_sample(const zelstudy_project* project, const char* options,
                                 zelstudy_result** out);
/** {"schemes": ["center-point", ...]}: what "scheme" may be. */
ZELSTUDY_API int zelstudy_schemes(zelstudy_result** out);

/* ---- Export and report ---------------------------------------------------------------------- */

/**
 * Writes the models for other programs; see `zel export`, docs/export.md and docs/model-json.md.
 *
 * Options:
 *     "format": "json"        or "c" or "python"
 *     "name": "truss"         beginning of all names in C; without it that of the project
 *     "responses": NAMES      these alone; without it all
 *     "out": "truss.c"        a file, which takes the place of an old one in one step; without it the
 *                             result holds the text
 * Result: {"text": "..." or "out": "truss.c", "warnings": ["criterion \"...\" is left out: ..."]}.
 * A response that cannot be exported is refused.
 * @param progress  called once, before the work; may be null
 */
ZELSTUDY_API int zelstudy_export(const zelstudy_project* project, const char* options,
                                 zelstudy_progress progress, void* user, zelstudy_result** out);
/**
 * Writes the project as one HTML page that needs no network; see `zel report` and docs/report.md.
 *
 * Options: "out" as for zelstudy_export(), and
 *     "with": NAMES           analyses to show, too, with their defaults: "sensitivity", "propagate",
 *                             "optimize"
 *     "minimize", "maximize": NAMES   of "optimize", see zelstudy_optimize()
 * Result as for zelstudy_export(). Responses without a usable model are
 * left out, with a warning; a project without any is refused.
 */
ZELSTUDY_API int zelstudy_report(const zelstudy_project* project, const char* options,
                                 zelstudy_progress progress, void* user, zelstudy_result** out);

/* ---- Analyses ------------------------------------------------------------------------------- */

/**
 * Tells which inputs matter: Sobol' indices of all responses and criteria on the models; see `zel
 * sensitivity` and docs/decide.md.
 *
 * Options:
 *     "over": "bounds"        how inputs vary: evenly between their "bounds", or by their
 *                             "distributions"; by default as the project's models were sampled,
 *                             or by the distributions that are given
 *     "distributions": NAMES  "load:normal(12, 0.6)": in place of what the project says
 *     "fixed": NAMES          "load=12": inputs that shall not vary
 *     "criteria": NAMES       "limit: stress <= 25": further criteria
 *     "n": 4096               rows of the base samples; a power of 2 is best
 *     "second_order": false   the interactions of pairs, too
 *     "seed": 1               0 to 4294967295
 *
 * Result: {"over", "seed", "confidence": 0.95, "base": 4096, "evaluations": 49152,
 *  "inputs": {NAME: {"distribution": "NORMAL", "mean", "sd"} or {"value"}},
 *  "groups": [["a"], ["b", "c"]],
 *  "quantities": {NAME: {"kind": "response", "value" or "limit", "mean", "sd", "constant", "failed",
 *    "unexplained", "first": {INPUT: x}, "first_low", "first_high", "total", "total_low",
 *    "total_high", "second": [{"inputs": ["a", "b + c"], "value", "low", "high"}]}},
 *  "notes": [...]}
 * Inputs that are correlated make one group, "b + c" as INPUT. "unexplained" is 1 - CoP of a response,
 * null for criteria. "failed" rows had no value. Indices of what is "constant" are null.
 */
ZELSTUDY_API int zelstudy_sensitivity(const zelstudy_project* project, const char* options,
                                      zelstudy_progress progress, void* user,
                                      zelstudy_result** out);

/**
 * Tells how responses and criteria scatter when the inputs do, and how likely each limit is violated;
 * see `zel propagate` and docs/decide.md. Inputs without distribution stay at their reference values.
 *
 * Options: "distributions", "fixed", "criteria", "seed" as for zelstudy_sensitivity(), and
 *     "scheme": "latin-hypercube"  or "sobol", "monte-carlo"
 *     "n": 10000              designs of the sample
 *     "until": 0              double the sample until means, standard deviations and probabilities are
 *                             known to this relative precision; 0: do not
 *     "most": 1048576         designs at most with "until"
 *     "quantiles": [0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99]
 *     "model_error": false    let the errors of the models scatter, too
 *     "form": true            design points and importance sampling of the limits
 *
 * Result: {"designs", "scheme", "seed", "confidence", "model_error", "inputs" as above,
 *  "quantities": {NAME: {"kind", "mean", "mean_low", "mean_high", "sd", ..., "cov", ..., "min", "max",
 *    "quantiles": {"0.05": x}, "quantiles_low", "quantiles_high", "failed"}},
 *  "correlations": [{"quantities": ["y", "z"], "coefficient", "low", "high"}],
 *  "limits": {NAME: {"probability", "low", "high", "beta", "method": "sampling" or "importance
 *    sampling", "sampling": {"probability", "low", "high", "violations", "failed"},
 *    "without_model_error": {...}, "form": {"beta", "probability", "design_points": [{"beta",
 *    "inputs": {NAME: x}, "importances": {NAME: x}}]}, "importance_sampling": {..., "points"},
 *    "warnings": [...]}},
 *  "notes": [...]}
 * "form" and "importance_sampling" are missing where no design point was looked for or found; "beta" is
 * null then.
 */
ZELSTUDY_API int zelstudy_propagate(const zelstudy_project* project, const char* options,
                                    zelstudy_progress progress, void* user, zelstudy_result** out);

/* ---- Expressions ---------------------------------------------------------------------------- */

/**
 * Evaluates an expression of the language of criteria; see docs/expressions.md.
 *
 * Result: {"kind": "scalar", "text": "...", "value": 3.5}. "text" is what `zel eval` prints; "kind" is
 * "boolean", "scalar", "vector", "matrix", "signal", "xydata" or "uninitialized"; "value" is there
 * for the first four where it is real: true or false, a number, a list, a list of rows. Array "value"
 * holds the numbers: 1 x 1, n x 1, rows x columns, of a signal channels x n; "imaginary" the same size
 * where they are complex; "timeline" n x 1 of a signal.
 * @param definitions  a JSON object of names with meanings that the expression may use: a number, a
 *                     Boolean, an array of numbers (a vector), an array of such arrays (a matrix), or
 *                     a text, which is an expression
 */
ZELSTUDY_API int zelstudy_evaluate(const char* expression, const char* definitions,
                                   zelstudy_result** out);
/**
 * {"groups": [{"name": "...", "functions": [{"name": "abs", "text": "..."}]}],
 *  "constants": [{"name": "PI", "text": "..."}]}
 */
ZELSTUDY_API int zelstudy_functions(zelstudy_result** out);
/**
 * Explains a function or constant:
 * {"name": "abs", "text": as `zel help` prints it, "forms": [{"signature": "...", "text": "...",
 *  "arguments": [{"name": "x", "kinds": "...", "values": "...", "optional": false, "text": "..."}]}]}
 */
ZELSTUDY_API int zelstudy_help(const char* name, zelstudy_result** out);
/**
 * {"builtin": [MACRO, ...], "user": [MACRO, ...], "file": "...", "problem": "..."}; MACRO:
 * {"name": "...", "arguments": ["a", "b"], "text": "...", "category": "...", "description": "...",
 *  "hidden": false}. "problem" says what is wrong with the user's file; null for nothing.
 */
ZELSTUDY_API int zelstudy_macros(zelstudy_result** out);

/** {"hash": "..."}: the SHA-512 signature of a file, 128 lower-case hexadecimal digits. */
ZELSTUDY_API int zelstudy_hash(const char* path, zelstudy_result** out);

#ifdef __cplusplus
}
#endif

#endif /* ZELSOLVER_STUDY_H */
