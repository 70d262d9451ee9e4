#include <zavo.h>

int main(void) {
  VersionRecord record;
  return Zv_VersionInfo(&record) == KSUCCESS && record.Major == 8 ? 0 : 1;
}
