#include "detail/symbolic_link.hpp"

#include <boost/filesystem/operations.hpp>

#include <sys/stat.h>

namespace TOVA_2_18 {
namespace detail {

bool is_symbolic_link(const std::string& path) {
    const auto status = boost::filesystem::symlink_status(boost::filesystem::path(path));
    return status.type() == boost::filesystem::symlink_file;
}

bool is_pipe(const std::string& path) {
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

}  // namespace detail
}  // namespace TOVA_2_18
