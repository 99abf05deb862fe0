#include "xmc/output.hpp"

#include "support/text_file.hpp"

#include <utility>

namespace tova_programs::xmc {

using json = nlohmann::ordered_json;

bool is_standard(const std::string& output) {
    return output.empty() || output == "-";
}

void write_result(const std::string& output, const std::string& text, std::ostream& out) {
    if (is_standard(output))
        out << text;
    else
        write_file(output, text);
}

std::string dumped(const json& document, int indent) {
    return document.dump(indent, ' ', false, json::error_handler_t::replace);
}

void write_json(std::ostream& out, const json& document) {
    out << dumped(document) << '\n';
}

void write_json_result(const std::string& output, const std::string& text, json about,
                       std::ostream& out) {
    if (is_standard(output)) {
        about["text"] = text;
    } else {
        write_file(output, text);
        about["file"] = output;
    }
    write_json(out, about);
}

}  // namespace tova_programs::xmc
