#include <tova/strings/prefix.hpp>

namespace TOVA_2_18 {
namespace strings {

bool begin_with(const ustring8& text, const unsigned long& position, const ustring8& prefix) {
    if (prefix.size() + position > text.size())
        return false;
    if (prefix.empty())
        return true;
    // Where the sum wrapped round, the position lies far behind the text and nothing is equal.
    return position < text.size() && text.compare(position, prefix.size(), prefix) == 0;
}

}  // namespace strings
}  // namespace TOVA_2_18
