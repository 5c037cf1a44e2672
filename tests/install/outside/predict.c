/* Prints the predictions of a project with ten inputs at the given design. */
#include <stdio.h>
#include <stdlib.h>
#include <zelsolver/zelsolver.h>

int main(int argc, char** argv) {
  double design[10];
  double out[12];
  int i;
  if (argc != 12) return 2;
  for (i = 0; i < 10; ++i) design[i] = atof(argv[2 + i]);
  if (dzel2_solve(argv[1], 1, design, 10, ZEL_SOLVE_RESPONSES, out, 12) != ZEL_OK) {
    fprintf(stderr, "%s\n", dzel2_getLastError());
    return 1;
  }
  for (i = 0; i < 12; ++i) printf("%.17g\n", out[i]);
  return dzel2_cleanup();
}
