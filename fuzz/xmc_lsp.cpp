// The language server of tova-xmc: any bytes as a client's stream, whole and in two pieces. Each
// request has one response, both ways give the same messages, and every message is JSON in UTF-8.
//
// Input: the stream. No message may name a file, since files could be anywhere.
#include "require.hpp"
#include "support/choose_form.hpp"
#include "xmc/lsp/server.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using tova_programs::xmc::lsp::json;
using tova_programs::xmc::lsp::server;

namespace {

// The messages of a session. A check comes at the end only: how often one is due depends on the
// pieces.
std::vector<std::string> messages_of(std::string_view bytes, std::size_t cut) {
    std::vector<std::string> sent;
    server one({}, [&sent](const std::string& content) { sent.push_back(content); });
    for (const std::string_view piece : {bytes.substr(0, cut), bytes.substr(cut)})
        one.receive(piece);
    while (one.handle_next()) {
    }
    one.check_if_due();
    return sent;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz_support::choose_kernel_form(data, size);
    std::string bytes(reinterpret_cast<const char*>(data), size);
    for (auto at = bytes.find("file:"); at != bytes.npos; at = bytes.find("file:", at))
        bytes.replace(at, 5, "data:");
    // An escape in JSON could spell the scheme as well.
    if (bytes.find("\\u00") != bytes.npos)
        return 0;
    const std::vector<std::string> whole = messages_of(bytes, bytes.size());
    for (const std::string& each : whole) {
        const json message = json::parse(each, nullptr, false);
        fuzz_support::require(message.is_object() && message["jsonrpc"] == "2.0");
        const bool is_response = message.contains("result") || message.contains("error");
        fuzz_support::require(is_response ? message.contains("id") : message.contains("method"));
    }
    fuzz_support::require(whole == messages_of(bytes, bytes.size() / 2));
    return 0;
}
