#include "cfg/model/save.hpp"

#include "support/text_file.hpp"

#include <tova/config/file_item.hpp>

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <map>
#include <system_error>
#include <vector>

namespace tova_programs::cfg {

namespace {

// A file in its own folder. The destructor removes both.
class temporary_file {
public:
    temporary_file() {
        const char* const folder = std::getenv("TMPDIR");
        m_folder = std::string(folder == nullptr || *folder == '\0' ? "/tmp" : folder) +
                   "/tova-cfg.XXXXXX";
        if (::mkdtemp(&m_folder[0]) == nullptr)
            throw file_error(m_folder + ": " + std::generic_category().message(errno));
    }
    ~temporary_file() {
        ::unlink(name().c_str());
        ::rmdir(m_folder.c_str());
    }
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;

    std::string name() const { return m_folder + "/settings.cfg"; }

private:
    std::string m_folder;
};

// The size of the saved file without quotes and the numbers of elements: an entry is written under
// each section whose name is as long as that of its parent.
std::size_t estimated_size(tova::config::file_item& item) {
    tova::config::config_node_list nodes;
    item.get_value_pair_array("", nodes, true);
    std::map<std::size_t, std::size_t> sections;  // by the length of the name
    for (const auto& node : nodes)
        if (node.second.first == 0)
            ++sections[node.first.size()];
    std::size_t size = 0;
    for (const auto& node : nodes) {
        if (node.second.first == 0) {
            size += node.first.size() + 4;
            continue;
        }
        const std::size_t dot = node.first.rfind('.');
        const auto same = dot == std::string::npos ? sections.end() : sections.find(dot);
        if (same != sections.end())
            size +=
                same->second * (node.first.size() - dot + node.second.second.as_utf8().size() + 2);
    }
    return size;
}

}  // namespace

saved_file saved(const std::string& bytes, std::size_t limit) {
    const temporary_file file;
    // write_file would flush the file to disk, but no other program reads this one.
    std::ofstream out(file.name(), std::ios::binary);
    out << bytes;
    out.close();
    if (!out)
        throw file_error(file.name() + ": cannot be written");
    tova::config::file_item item(file.name());
    item.load();
    saved_file result;
    result.size = estimated_size(item);
    result.is_too_large = result.size > limit;
    if (result.is_too_large)
        return result;
    item.save();
    result.text = read_file(file.name());
    result.size = result.text.size();
    return result;
}

}  // namespace tova_programs::cfg
