#include "system/file_status.hpp"

#include <sys/stat.h>

namespace TOVA_2_18 {
namespace system {
namespace detail {

bool has_mode_bits(const strings::ustring8& path, mode_t bits) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & bits) == bits;
}

}  // namespace detail
}  // namespace system
}  // namespace TOVA_2_18
