// Whole files, read into a new string each time. The files are in the page cache.
#include <tova/system/files.hpp>

#include "cell.hpp"
#include "scratch_folder.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

#ifdef HAVE_QT6
#include <QFile>
#endif

namespace {

using bench_support::cell;
using tova::strings::ustring8;

// The minimum: the size, one allocation that is not cleared, and one read.
std::string read_at_once(const std::string& path) {
    std::string content;
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    const auto size = static_cast<std::size_t>(::lseek(file, 0, SEEK_END));
    ::lseek(file, 0, SEEK_SET);
    content.resize_and_overwrite(size, [file](char* to, std::size_t room) {
        return static_cast<std::size_t>(::read(file, to, room));
    });
    ::close(file);
    return content;
}

void add(const std::string& name, std::size_t size) {
    static const bench_support::scratch_folder folder;
    const std::string path = folder / name;
    const ustring8 ours(path);
    cell load(
        "load_file/" + name,
        [ours] {
            ustring8 content;
            tova::system::load_file(ours, content);
            return content;
        },
        [path, size] {
            std::string content;
            while (content.size() < size)
                content += "line " + std::to_string(content.size()) + "\n";
            content.resize(size);
            std::ofstream(path, std::ios::binary) << content;
        });
    load.add("floor", [path] { return read_at_once(path); });
    load.add("plain", [ours] {
        ustring8 content;
        std::ifstream file(ours.c_str(), std::ios::binary);
        file.seekg(0, std::ios::end);
        content.assign(static_cast<std::size_t>(file.tellg()), '\0');
        file.seekg(0, std::ios::beg);
        file.read(&content[0], static_cast<std::streamsize>(content.size()));
        return content;
    });
    load.add("ifstream", [path] {
        std::ifstream file(path, std::ios::binary | std::ios::ate);
        std::string content(static_cast<std::size_t>(file.tellg()), '\0');
        file.seekg(0).read(&content[0], static_cast<std::streamsize>(content.size()));
        return content;
    });
#ifdef HAVE_QT6
    const QString qt = QString::fromStdString(path);
    load.add("qfile", [qt] {
        QFile file(qt);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    });
#endif
}

const bool added = [] {
    add("4KiB", 4096);
    add("1MiB", 1 << 20);
    add("100MiB", 100 << 20);
    return true;
}();

}  // namespace
