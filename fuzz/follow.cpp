// A followed document has the same events in one piece and in many pieces, and its elements are
// properly nested.
//
// Input: one byte that is odd if errors are skipped, one for the length of the pieces, and the
// document.
#include <tova/extras/follow.hpp>

#include "require.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace {

using fuzz_support::require;
using tova::extras::follow_event;

std::string rendered(const std::deque<follow_event>& events) {
    std::string result;
    for (const follow_event& event : events) {
        result += std::to_string(event.kind) + ' ' + std::to_string(event.depth) + ' ' +
                  std::to_string(event.line) + ' ' + name(event.error_code) + ' ' + event.name +
                  ' ' + event.content;
        for (const auto& attribute : event.attributes)
            result += ' ' + attribute.first + '=' + attribute.second;
        result += '\n';
    }
    return result;
}

// Every end matches the last start that is still open. An error abandons no reported element.
void require_nesting(const std::deque<follow_event>& events) {
    std::vector<std::string> open;
    for (const follow_event& event : events) {
        if (event.kind == follow_event::start)
            open.push_back(event.name);
        if (event.kind != follow_event::error)
            require(!open.empty() && event.depth == open.size() && open.back() == event.name);
        if (event.kind == follow_event::end)
            open.pop_back();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
    std::vector<tova::strings::ustring8> resume_at;
    if (data[0] % 2 == 1)
        resume_at = {"e", "entry"};

    std::deque<follow_event> whole;
    tova::extras::_private::follow_document one(resume_at, whole);
    one.feed(bytes.data(), bytes.size());
    require_nesting(whole);
    one.finish();

    std::deque<follow_event> cut;
    tova::extras::_private::follow_document many(resume_at, cut);
    const std::size_t step = 1 + data[1] % 64;
    for (std::size_t at = 0; at < bytes.size(); at += step)
        many.feed(bytes.data() + at, std::min(step, bytes.size() - at));
    many.finish();
    require(rendered(whole) == rendered(cut));
    return 0;
}
