// The public header in a C++17 program.
#include <zavo.h>

static_assert(__cplusplus == 201703L);

int usesHeaderFromCxx17() {
  VersionRecord record;
  return Zv_VersionInfo(&record);
}
