#pragma once
// The names of the library's status codes, as the header defines them.

#include <cstdint>
#include <string>

namespace pelmctl {

// "PELM_ERR_NODEVICE" for 3; "status 42" for a code the header does not define.
std::string StatusName(int32_t status);

// What a user can do about a failed status, in one sentence; empty if nothing.
std::string StatusAdvice(int32_t status);

}  // namespace pelmctl
