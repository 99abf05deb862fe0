#include "xmc/lsp/lookup.hpp"

#include <algorithm>

namespace tova_programs::xmc::lsp {

found_message message_at(const document_pointer& in, std::size_t offset) {
    const document& file = in->file;
    for (const catalog& of : file.catalogs())
        for (const message& each : file.messages(of))
            if (each.bytes.begin <= offset && offset < each.bytes.end)
                return {in, &of, &each};
    return {};
}

std::vector<found_message> messages_of(const std::vector<document_pointer>& documents,
                                       std::string_view catalog_name, std::string_view key) {
    std::vector<found_message> result;
    for (const document_pointer& in : documents)
        for (const catalog& of : in->file.catalogs()) {
            if (of.name != catalog_name)
                continue;
            for (const message& each : in->file.messages(of))
                if (each.name == key)
                    result.push_back({in, &of, &each});
        }
    std::stable_sort(
        result.begin(), result.end(),
        [](const found_message& a, const found_message& b) { return a.of->locale < b.of->locale; });
    return result;
}

found_message original_of(const std::vector<found_message>& all, const std::string& reference,
                          const std::string& locale) {
    const std::string wanted = normalized_locale(reference);
    const std::string own = normalized_locale(locale);
    found_message other;
    for (const found_message& each : all) {
        const std::string name = normalized_locale(each.of->locale);
        if (name == own)
            continue;
        if (name == wanted)
            return each;
        if (!other)
            other = each;
    }
    return other;
}

}  // namespace tova_programs::xmc::lsp
