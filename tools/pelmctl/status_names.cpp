#include "tools/pelmctl/status_names.h"

#include "core/pelm_dev.h"

namespace pelmctl {

std::string StatusName(int32_t status) {
  switch (status) {
    case PELM_SUCCESS: return "PELM_SUCCESS";
    case PELM_ERR_INDEX: return "PELM_ERR_INDEX";
    case PELM_ERR_NOMEM: return "PELM_ERR_NOMEM";
    case PELM_ERR_NODEVICE: return "PELM_ERR_NODEVICE";
    case PELM_ERR_QUEUE: return "PELM_ERR_QUEUE";
    case PELM_ERR_IO: return "PELM_ERR_IO";
    case PELM_ERR_PARAM: return "PELM_ERR_PARAM";
    case PELM_ERR_UNSUPPORTED: return "PELM_ERR_UNSUPPORTED";
    default: return "status " + std::to_string(status);
  }
}

std::string StatusAdvice(int32_t status) {
  switch (status) {
    case PELM_ERR_INDEX: return "the index is beyond the model's slots; `pelmctl list` shows the devices there are";
    case PELM_ERR_NODEVICE: return "no panel of this family is connected at that index; check the cable and `pelmctl list`";
    case PELM_ERR_QUEUE: return "the panel is not taking reports fast enough; try again";
    case PELM_ERR_IO: return "the panel did not answer; unplug and replug it";
    case PELM_ERR_PARAM: return "the library refused an argument; see `pelmctl set --help`";
    case PELM_ERR_UNSUPPORTED: return "this model has no such function";
    case PELM_ERR_NOMEM: return "the library ran out of memory";
    default: return "";
  }
}

}  // namespace pelmctl
