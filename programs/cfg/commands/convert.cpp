#include "cfg/commands/convert.hpp"

#include "cfg/model/edit.hpp"
#include "cfg/model/ini_format.hpp"
#include "cfg/model/other_formats.hpp"
#include "support/exit_code.hpp"
#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

struct loss {
    std::string key;
    std::string reason;
};

std::string joined(const std::vector<std::string>& names) {
    std::string result;
    for (const std::string& name : names)
        result += (result.empty() ? "" : ".") + name;
    return result;
}

// Collects the lines of each section, in the order in which sections first appear.
class converter {
public:
    void add(const foreign_value& value) {
        const std::string key = joined(value.path);
        if (!value.problem.empty())
            return lose(key, "a settings file cannot hold " + value.problem);
        for (const std::string& text : value.values)
            if (text.empty())
                return lose(key, "a settings file cannot hold an empty value");
        for (const std::string& name : value.path)
            if (name.empty() || name.find_first_of("./\\") != std::string::npos)
                m_losses.push_back({key, "\"" + name + "\" becomes several names, or none"});
        const std::string path = path_of(key);
        if (!m_known.insert(path).second)
            m_losses.push_back({key, "another key differs in letter case only; the last one wins"});
        try {
            // The entry is added to an empty file. That also checks that it reads back.
            const document empty(key, "");
            const std::string text = with_value(empty, key, value.values, value.is_array);
            const std::size_t line = text[0] == '[' ? text.find('\n') + 1 : 0;
            add_line(text.substr(0, line), text.substr(line));
        } catch (const edit_error& error) {
            lose(key, error.what());
        }
    }

    // The top level comes first: after a header, only an empty header leads back to it.
    std::string text() const {
        std::string result;
        for (const bool is_top : {true, false})
            for (const std::string& header : m_order)
                if (header.empty() == is_top)
                    result += (result.empty() ? "" : "\n") + header + m_lines.at(header);
        return result;
    }

    const std::vector<loss>& losses() const { return m_losses; }

private:
    void lose(const std::string& key, const std::string& reason) {
        m_losses.push_back({key, reason});
    }

    void add_line(const std::string& header, const std::string& line) {
        if (m_lines.find(header) == m_lines.end())
            m_order.push_back(header);
        m_lines[header] += line;
    }

    std::vector<std::string> m_order;
    std::map<std::string, std::string> m_lines;
    std::set<std::string> m_known;
    std::vector<loss> m_losses;
};

std::vector<foreign_value> read_as(const std::string& format, const std::string& path) {
    std::string bytes = read_file(path);
    if (format == "json")
        return read_json(path, bytes);
    if (format == "toml")
        return read_toml(path, bytes);
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
        bytes.erase(0, 3);
    ini_reading read =
        read_ini(format == "inih" ? ini_dialect::inih : ini_dialect::configparser, bytes);
    for (const ini_refusal& each : read.refusals)
        if (!each.is_duplicate)
            throw file_error(path + ':' + std::to_string(each.line) + ": " + each.reason);
    return std::move(read.values);
}

std::string format_of(const convert_options& options) {
    if (!options.format.empty())
        return options.format;
    const std::string extension =
        options.file.substr(std::min(options.file.rfind('.'), options.file.size()));
    return extension == ".json" ? "json" : extension == ".toml" ? "toml" : "ini";
}

}  // namespace

int run_convert(const convert_options& options, std::ostream& out, std::ostream& errors) {
    converter result;
    for (const foreign_value& each : read_as(format_of(options), options.file))
        result.add(each);
    if (options.as_json) {
        ordered_json all;
        all["settings"] = result.text();
        all["lost"] = ordered_json::array();
        for (const loss& each : result.losses())
            all["lost"].push_back({{"key", each.key}, {"reason", each.reason}});
        out << all.dump(2, ' ', false, ordered_json::error_handler_t::replace) << '\n';
        return result.losses().empty() ? exit_clean : exit_findings;
    }
    if (options.output.empty())
        out << result.text();
    else
        write_file(options.output, result.text());
    out.flush();
    for (const loss& each : result.losses())
        errors << options.file << ": " << each.key << ": " << each.reason << '\n';
    return result.losses().empty() ? exit_clean : exit_findings;
}

}  // namespace tova_programs::cfg
