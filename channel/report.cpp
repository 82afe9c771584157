#include "channel/report.h"

#include <new>

namespace pelm {

ReportBytes AllocateReport(uint32_t length) {
  return ReportBytes(new (std::nothrow) uint8_t[length]());
}

}  // namespace pelm
