/* Recombination frequency of two markers in an F1-derived backcross: 80 parental and 20 recombinant plants.
 */
#include <stdio.h>
#include <tessarmont/exports.h>

int main(void) {
  const int32_t population = 1, pair = 11;
  const float counts[9] = {42, 9, 0, 11, 38, 0, 0, 0, 0};
  float rec, error, lod, p, haldane, kosambi;
  TOOLTWOPOINTREC(&population, &pair, counts, &rec, &error, &lod, &p, &haldane, &kosambi);
  printf("r = %.4f +- %.4f, LOD %.2f, %.2f cM (Kosambi)\n", rec, error, lod, kosambi);
  return 0;
}
