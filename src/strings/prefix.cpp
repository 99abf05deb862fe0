#include <tova/strings/prefix.hpp>

namespace TOVA_2_18 {
namespace strings {

bool begin_with(const ustring8& text, const unsigned long& position, const ustring8& prefix) {
    // Contract: the sum is compared, and it may wrap.
    if (prefix.size() + position > text.size())
        return false;
    if (prefix.empty())
        return true;
    // After a wrap, the position is far past the end, where nothing matches.
    return position < text.size() && text.compare(position, prefix.size(), prefix) == 0;
}

}  // namespace strings
}  // namespace TOVA_2_18
