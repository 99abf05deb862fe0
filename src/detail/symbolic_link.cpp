#include "detail/symbolic_link.hpp"

#include <boost/filesystem/operations.hpp>

namespace TOVA_2_18 {
namespace detail {

bool is_symbolic_link(const std::string& path) {
    const auto status = boost::filesystem::symlink_status(boost::filesystem::path(path));
    return status.type() == boost::filesystem::symlink_file;
}

}  // namespace detail
}  // namespace TOVA_2_18
