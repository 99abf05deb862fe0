#include <tova/functor/delegate.hpp>

namespace TOVA_2_18 {
namespace functor {

// Events of a text, events of an attribute, and the assertion hook.
template class function_type_interface<void(const strings::ustring8&)>;
template class function_type_interface<void(const strings::ustring8&, const strings::ustring8&)>;
template class function_type_interface<void(const char*, const char*, unsigned int&)>;
template class delegate_t<void(const strings::ustring8&)>;
template class delegate_t<void(const strings::ustring8&, const strings::ustring8&)>;
template class delegate_t<void(const char*, const char*, unsigned int&)>;

}  // namespace functor
}  // namespace TOVA_2_18
