#include "system/file_status.hpp"

#include <sys/stat.h>

#include <boost/filesystem/operations.hpp>

namespace TOVA_2_18 {
namespace system {
namespace detail {

bool is_symbolic_link(const strings::ustring8& path) {
    const boost::filesystem::path link(static_cast<const std::string&>(path));
    return boost::filesystem::symlink_status(link).type() == boost::filesystem::symlink_file;
}

bool has_mode_bits(const strings::ustring8& path, mode_t bits) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & bits) == bits;
}

}  // namespace detail
}  // namespace system
}  // namespace TOVA_2_18
