/* Trains a model on designs in memory, tells how good it is, predicts, and saves the project.
 *
 *     cc study_in_c.c $(pkg-config --cflags --libs zelstudy) -lm -o study_in_c
 *     ./study_in_c study.vrdb
 */
#include <math.h>
#include <stdio.h>
#include <zelsolver/study.h>

enum { N = 40 };

static int fail(void) {
  fprintf(stderr, "%s\n", zelstudy_last_error());
  return 1;
}

static int show(double share, const char* text, void* user) {
  (void)user;
  fprintf(stderr, "%3.0f %% %s\n", 100.0 * share, text);
  return 0; /* anything else cancels */
}

int main(int argc, char** argv) {
  const char* const options =
      "{\"inputs\": [\"width\", \"height\"], \"responses\": [\"stiffness\"], \"budget\": 2}";
  double width[N], height[N], stiffness[N];
  zelstudy_table* table;
  zelstudy_project* project;
  zelstudy_result* result;
  int i;

  for (i = 0; i < N; ++i) { /* an additive recurrence covers the square evenly */
    width[i] = 1.0 + fmod(0.754877666 * i, 1.0);
    height[i] = 1.0 + fmod(0.569840291 * i, 1.0);
    stiffness[i] = width[i] * pow(height[i], 3.0) / 12.0;
  }
  if (zelstudy_table_new(&table) != ZELSTUDY_OK ||
      zelstudy_table_add_numbers(table, "width", width, N) != ZELSTUDY_OK ||
      zelstudy_table_add_numbers(table, "height", height, N) != ZELSTUDY_OK ||
      zelstudy_table_add_numbers(table, "stiffness", stiffness, N) != ZELSTUDY_OK ||
      zelstudy_train(table, options, show, NULL, &project, &result) != ZELSTUDY_OK)
    return fail();
  printf("%s\n", zelstudy_result_json(result));
  zelstudy_result_close(result);
  zelstudy_table_close(table);

  {
    const double at[] = {1.5, 1.5, 1.2, 1.8}; /* two designs of two inputs */
    const double* predicted;
    size_t rows, columns;
    if (zelstudy_solve(project, NULL, at, 2, NULL, NULL, &result) != ZELSTUDY_OK ||
        zelstudy_result_array(result, "responses", &predicted, &rows, &columns) != ZELSTUDY_OK)
      return fail();
    for (i = 0; i < 2; ++i)
      printf("stiffness(%g, %g) = %g, exactly %g\n", at[2 * i], at[2 * i + 1], predicted[i],
             at[2 * i] * pow(at[2 * i + 1], 3.0) / 12.0);
    zelstudy_result_close(result);
  }
  if (argc > 1 && zelstudy_project_save(project, argv[1]) != ZELSTUDY_OK) return fail();
  zelstudy_project_close(project);
  return 0;
}
