#include <tova/functor/delegate.hpp>

namespace TOVA_2_18 {
namespace functor {

// The signatures that cross the library's boundary, exported once instead of from every module that
// uses them: parser events with one string, attribute events with two, and the assertion hook.
template class function_type_interface<void(const strings::ustring8&)>;
template class function_type_interface<void(const strings::ustring8&, const strings::ustring8&)>;
template class function_type_interface<void(const char*, const char*, unsigned int&)>;
template class delegate_t<void(const strings::ustring8&)>;
template class delegate_t<void(const strings::ustring8&, const strings::ustring8&)>;
template class delegate_t<void(const char*, const char*, unsigned int&)>;

}  // namespace functor
}  // namespace TOVA_2_18
