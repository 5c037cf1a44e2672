/*
 * Opens a project and prints what it holds: inputs with their bounds and reference values, and the
 * responses with their quality, as predicted at the reference values.
 *
 *     c_caller zel_tenbar.vrdb
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zelsolver/zelsolver.h>

static int fail(const char* what) {
  const char* text = dzel2_getLastError();
  fprintf(stderr, "%s: %s\n", what, text != NULL ? text : "no memory");
  dzel2_cleanup();
  return EXIT_FAILURE;
}

/* The name behind `name` in a list, which ends with an empty one. */
static const char* next(const char* name) {
  return name + strlen(name) + 1;
}

static int print_project(const char* path) {
  unsigned int dims[2]; /* inputs, outputs */
  char* names = NULL;
  double* inputs;
  double* bounds;
  double* responses;
  double* cops;
  const char* name;
  unsigned int i;

  if (dzel2_getDimensions(path, ZEL_INPUTS | ZEL_OUTPUTS, dims, 2) != ZEL_OK) return fail(path);
  inputs = malloc(dims[0] * sizeof *inputs);
  bounds = malloc(2 * dims[0] * sizeof *bounds);
  responses = malloc(dims[1] * sizeof *responses);
  cops = malloc((dims[0] + 1) * sizeof *cops);
  if (inputs == NULL || bounds == NULL || responses == NULL || cops == NULL) return fail(path);

  if (dzel2_getInputBounds(path, bounds) != ZEL_OK ||
      dzel2_getNames(path, ZEL_INPUTS, &names) != ZEL_OK)
    return fail(path);
  printf("%-20s %12s %12s %12s\n", "input", "lower", "upper", "reference");
  for (i = 0, name = names; i < dims[0]; ++i, name = next(name)) {
    if (dzel2_getReferenceValuePerParameter(path, name, &inputs[i]) != ZEL_OK) return fail(name);
    printf("%-20s %12g %12g %12g\n", name, bounds[2 * i], bounds[2 * i + 1], inputs[i]);
  }
  dzel2_free(names);

  /* One design: input i stands at inputs[i], output k at responses[k]. The reference design may lie
     outside of what the project's designs cover. */
  if (dzel2_solve(path, 1, inputs, dims[0], ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES, responses,
                  dims[1]) != ZEL_OK ||
      dzel2_getNames(path, ZEL_OUTPUTS, &names) != ZEL_OK)
    return fail(path);
  printf("\n%-20s %12s %12s\n", "response", "CoP", "predicted");
  for (i = 0, name = names; i < dims[1]; ++i, name = next(name)) {
    if (dzel2_getCoPValuesPerResponse(path, name, cops) != ZEL_OK) return fail(name);
    printf("%-20s %12g %12g\n", name, cops[dims[0]], responses[i]);
  }
  dzel2_free(names);

  free(inputs);
  free(bounds);
  free(responses);
  free(cops);
  dzel2_cleanup();
  return EXIT_SUCCESS;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s PROJECT.vrdb\n", argv[0]);
    return 2;
  }
  return print_project(argv[1]);
}
