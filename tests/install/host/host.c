/* A host built outside the tree against an installed pelmdev: it must compile
 * from the installed headers alone and link and run against the library. */
#include <pelm_dev.h>
#include <pelm_dev_ext.h>
#include <stdio.h>

int main(void) {
  if (PelmDev_Init(NULL) != 0) return 1;
  printf("radio panels: %u\n", PelmRadio_GetNumDevices());
  printf("event descriptor without hot-plug: %d\n", PelmDevExt_EventDescriptor());
  return PelmDev_Terminate() == 0 ? 0 : 1;
}
