#include "cfg/commands/watch.hpp"

#include "cfg/scanner/document.hpp"
#include "support/exit_code.hpp"
#include "support/text_file.hpp"

#include <nlohmann/json.hpp>

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <system_error>
#include <utility>

// Editors and tova-cfg itself replace a file instead of writing to it, so the folder is watched and
// not the file. The file is read after a writer closes it, never while it writes. Some network file
// systems report no events, so the file is also read every second.

namespace tova_programs::cfg {

namespace {

using nlohmann::ordered_json;

struct setting {
    std::string text;
    std::string where;
};

using settings = std::map<std::string, setting>;

settings read_settings(const std::string& path) {
    settings result;
    if (::access(path.c_str(), R_OK) != 0)
        return result;
    const document file(path, read_file(path));
    const line_index lines(file.bytes());
    for (const stored_node& each : stored_nodes(file)) {
        const entry& from = file.entries()[each.entry];
        if (each.has_value && from.is_array)
            continue;  // shown with its array
        const text_place at = lines.at(from.bytes.begin);
        setting& found = result[each.path];
        found.where = path + ':' + std::to_string(at.line) + ':' + std::to_string(at.column);
        found.text = each.value;
        if (!from.is_array)
            continue;
        for (const value_piece& piece : from.values)
            found.text += (found.text.empty() ? "[" : ", ") + piece.text;
        found.text += ']';
    }
    return result;
}

class watched_folder {
public:
    explicit watched_folder(const std::string& path) : m_descriptor(::inotify_init1(IN_CLOEXEC)) {
        const std::size_t slash = path.rfind('/');
        const std::string folder =
            slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
        if (m_descriptor < 0 ||
            ::inotify_add_watch(m_descriptor, folder.c_str(),
                                IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE) < 0) {
            const std::string reason = std::generic_category().message(errno);
            if (m_descriptor >= 0)
                ::close(m_descriptor);
            throw file_error(folder + ": " + reason);
        }
    }
    ~watched_folder() { ::close(m_descriptor); }
    watched_folder(const watched_folder&) = delete;
    watched_folder& operator=(const watched_folder&) = delete;

    // Returns when something happens in the folder, or after a second.
    void wait() const {
        pollfd ready = {m_descriptor, POLLIN, 0};
        if (::poll(&ready, 1, 1000) <= 0)
            return;
        char events[4096];
        if (::read(m_descriptor, events, sizeof events) < 0 && errno != EINTR)
            throw file_error(std::string("inotify: ") + std::generic_category().message(errno));
    }

private:
    int m_descriptor;
};

class change_writer {
public:
    change_writer(std::ostream& out, bool as_json, const style& colors)
        : m_out(out), m_as_json(as_json), m_colors(colors) {}

    // Returns whether there is a difference.
    bool write(const settings& before, const settings& after) const {
        bool is_different = false;
        for (const auto& each : before)
            if (after.count(each.first) == 0) {
                write_one("removed", each.first, &each.second.text, nullptr);
                is_different = true;
            }
        for (const auto& each : after) {
            const auto old = before.find(each.first);
            if (old != before.end() && old->second.text == each.second.text)
                continue;
            write_one(old == before.end() ? "added" : "changed", each.first,
                      old == before.end() ? nullptr : &old->second.text, &each.second);
            is_different = true;
        }
        m_out.flush();
        return is_different;
    }

private:
    void write_one(const std::string& what, const std::string& key, const std::string* before,
                   const setting* after) const {
        if (m_as_json) {
            ordered_json one;
            one["change"] = what;
            one["key"] = key;
            if (before != nullptr)
                one["before"] = *before;
            if (after != nullptr) {
                one["after"] = after->text;
                one["place"] = after->where;
            }
            m_out << one.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
            return;
        }
        m_out << (what == "removed" ? m_colors.red(what)
                  : what == "added" ? m_colors.green(what)
                                    : m_colors.yellow(what))
              << ": " << key << " = ";
        if (before != nullptr)
            m_out << *before << (after != nullptr ? " -> " : "");
        if (after != nullptr)
            m_out << after->text << "  (" << after->where << ')';
        m_out << '\n';
    }

    std::ostream& m_out;
    bool m_as_json;
    const style& m_colors;
};

}  // namespace

int run_watch(const watch_options& options, std::ostream& out, std::ostream& errors,
              const style& colors) {
    const watched_folder folder(options.file);
    if (::access(options.file.c_str(), F_OK) != 0)
        errors << "tova-cfg: " << options.file << " does not exist yet; waiting\n";
    const change_writer writer(out, options.as_json, colors);
    settings known = read_settings(options.file);
    for (std::size_t changes = 0; options.count == 0 || changes < options.count;) {
        folder.wait();
        settings fresh = read_settings(options.file);
        if (writer.write(known, fresh))
            ++changes;
        known = std::move(fresh);
    }
    return exit_clean;
}

}  // namespace tova_programs::cfg
