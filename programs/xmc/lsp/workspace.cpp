#include "xmc/lsp/workspace.hpp"

#include "support/text_file.hpp"
#include "xmc/lsp/uri.hpp"
#include "xmc/model/files.hpp"
#include "xmc/rules.hpp"
#include "xmc/version.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

// Documents come from two maps: the buffers, by the URI that the client uses, and the files, by
// canonical path. Whatever asks for a path gets the buffer first.
//
// The generation counts how often files may have changed. A file that was read in an older one is
// compared with the disk before it is used again, and the folders are listed again. While somebody
// types, neither happens, so that a keystroke costs no walk through the folders.

namespace tova_programs::xmc::lsp {

namespace {

namespace fs = std::filesystem;

const std::size_t longest_beginning = 65536;  // where <xmc must be mentioned

// Whether the file mentions the root element early. A pipe is not opened: that would wait.
bool looks_like_catalog(const std::string& path) {
    struct stat status;
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    std::string beginning(longest_beginning, '\0');
    const ssize_t size = ::read(file, &beginning[0], beginning.size());
    ::close(file);
    beginning.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return beginning.find("<xmc") != beginning.npos;
}

bool is_named_xmc(const std::string& path) {
    std::string end = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
    for (char& c : end)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return end == ".xmc";
}

// The same rule for a document that is open; one that is no file has only its URI.
bool is_catalog(const buffer& open) {
    return is_named_xmc(open.path.empty() ? open.uri : open.path) ||
           open.text.find("<xmc") != open.text.npos;
}

bool is_folder(const std::string& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

bool is_link(const std::string& path) {
    std::error_code error;
    return fs::is_symlink(path, error);
}

}  // namespace

void workspace::add_folder(const std::string& path) {
    if (path.empty() || std::find(m_folders.begin(), m_folders.end(), path) != m_folders.end())
        return;
    m_folders.push_back(path);
    forget_disk();
}

void workspace::remove_folder(const std::string& path) {
    m_folders.erase(std::remove(m_folders.begin(), m_folders.end(), path), m_folders.end());
    forget_disk();
}

void workspace::open(const std::string& uri, std::int64_t version, std::string text) {
    const std::string path = path_of(uri);
    m_buffers[uri] = {uri, path.empty() ? "" : canonical_path(path), version, std::move(text), {}};
    forget_disk();
}

void workspace::close(const std::string& uri) {
    m_buffers.erase(uri);
    forget_disk();
}

const buffer* workspace::find(const std::string& uri) const {
    const auto found = m_buffers.find(uri);
    return found == m_buffers.end() ? nullptr : &found->second;
}

void workspace::change(const std::string& uri, std::int64_t version, std::string text) {
    buffer& changed = m_buffers.at(uri);
    const bool was_catalog = is_catalog(changed);
    changed.version = version;
    changed.text = std::move(text);
    changed.checked = nullptr;
    if (is_catalog(changed) != was_catalog)
        forget_disk();
}

std::vector<std::string> workspace::roots() const {
    std::vector<std::string> result;
    if (m_options.paths.empty())
        result = m_folders;
    else if (m_folders.empty())
        result = m_options.paths;
    else
        for (const std::string& folder : m_folders)
            for (const std::string& path : m_options.paths)
                result.push_back((fs::path(folder) / path).native());
    result.erase(std::remove_if(result.begin(), result.end(),
                                [](const std::string& path) {
                                    std::error_code error;
                                    return !fs::exists(path, error);
                                }),
                 result.end());
    return result;
}

bool workspace::is_below(const std::vector<std::string>& roots, const std::string& path) const {
    return std::any_of(roots.begin(), roots.end(), [&path](const std::string& root) {
        const std::string folder = canonical_path(root);
        return path == folder || folder == "/" ||
               (path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
                path[folder.size()] == '/');
    });
}

buffer* workspace::buffer_at(const std::string& canonical) {
    for (auto& each : m_buffers)
        if (!each.second.path.empty() && each.second.path == canonical)
            return &each.second;
    return nullptr;
}

document_pointer workspace::checked(buffer& of) const {
    if (!of.checked)
        of.checked =
            std::make_shared<const checked_document>(of.path.empty() ? of.uri : of.path, of.text);
    return of.checked;
}

report workspace::check() {
    check_options options = m_options;
    options.paths = roots();
    for (const auto& each : m_buffers)
        if (!each.second.path.empty() && is_catalog(each.second) &&
            !is_below(options.paths, each.second.path))
            options.paths.push_back(each.second.path);
    report result = xmc::check(options, *this);
    for (auto& each : m_buffers)
        if (each.second.path.empty() && is_catalog(each.second))
            for (const finding& found : checked(each.second)->findings)
                if (is_reported(m_options, found))
                    result.add(found);
    drop_unread();
    return result;
}

// A file that this check did not need is gone, or nobody includes it any more.
void workspace::drop_unread() {
    for (auto each = m_files.begin(); each != m_files.end();)
        each = each->second.generation == m_generation ? std::next(each) : m_files.erase(each);
    m_checked_generation = m_generation;
}

document_pointer workspace::document_of(const std::string& uri) {
    const auto found = m_buffers.find(uri);
    if (found != m_buffers.end())
        return checked(found->second);
    const std::string path = path_of(uri);
    return !path.empty() && has_file(path) ? document(path) : nullptr;
}

std::vector<document_pointer> workspace::documents(const document_pointer& own) {
    if (m_checked_generation != m_generation)
        check();
    std::map<std::string, document_pointer> all;
    for (const auto& each : m_files)
        all[each.first] = each.second.checked;
    for (auto& each : m_buffers)
        if (!each.second.path.empty())
            all[each.second.path] = checked(each.second);
    std::vector<document_pointer> result;
    result.reserve(all.size() + 1);
    for (auto& each : all)
        result.push_back(std::move(each.second));
    if (std::find(result.begin(), result.end(), own) == result.end())
        result.push_back(own);
    return result;
}

std::string workspace::uri_for(const std::string& path) const {
    const std::string canonical = canonical_path(path);
    for (const auto& each : m_buffers)
        if (each.first == path || (!each.second.path.empty() && each.second.path == canonical))
            return each.first;
    return uri_of(path);
}

std::vector<std::string> workspace::files(const std::vector<std::string>& paths,
                                          std::vector<std::string>& /*failures*/) {
    if (m_listed_generation == m_generation)
        return m_listed;
    m_listed.clear();
    std::set<std::string> known;
    const auto list = [&](const std::string& path) {
        // A link is found, but it is not its target.
        if (is_link(path) || (has_file(path) && known.insert(canonical_path(path)).second))
            m_listed.push_back(path);
    };
    for (const std::string& path : paths) {
        if (!is_folder(path)) {
            list(path);
            continue;
        }
        for (const std::string& file : catalog_files_below(path))
            if (is_named_xmc(file) || looks_like_catalog(file))
                list(file);
    }
    // Open documents that the folders do not have yet.
    for (const auto& each : m_buffers)
        if (!each.second.path.empty() && is_catalog(each.second))
            list(each.second.path);
    m_listed_generation = m_generation;
    return m_listed;
}

bool workspace::has_file(const std::string& path) {
    if (buffer_at(canonical_path(path)) != nullptr)
        return true;
    if (!check_source::has_file(path))
        return false;
    try {
        document(path);
        return true;
    } catch (const file_error&) {
        return false;
    }
}

std::string workspace::bytes(const std::string& path) {
    return document(path)->file.bytes();
}

document_pointer workspace::document(const std::string& path) {
    const std::string canonical = canonical_path(path);
    if (buffer* const open = buffer_at(canonical))
        return checked(*open);
    kept_file& kept = m_files[canonical];
    if (kept.checked && kept.generation == m_generation)
        return kept.checked;
    struct stat status = {};
    ::stat(canonical.c_str(), &status);
    const std::int64_t changed =
        static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    const bool is_same = kept.checked && kept.changed == changed && kept.size == status.st_size &&
                         kept.number == status.st_ino;
    if (!is_same) {
        kept.checked = nullptr;
        try {
            kept.checked = check_source::document(path);
        } catch (const file_error&) {
            m_files.erase(canonical);
            throw;
        }
    }
    kept.changed = changed;
    kept.size = status.st_size;
    kept.number = status.st_ino;
    kept.generation = m_generation;
    return kept.checked;
}

}  // namespace tova_programs::xmc::lsp
