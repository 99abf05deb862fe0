/// @file
/// What a language server checks: the folders of a client, with the unsaved texts of the documents
/// that it has open.
///
/// Files on the disk are kept until the client says that files may have changed. A file below a
/// folder counts as a catalog if its name ends in .xmc, or if it ends in .xml and its beginning
/// mentions `<xmc`: other XML files of a project are none of a translator's business.
///
/// An object belongs to one thread.
#pragma once

#include "xmc/check/check.hpp"
#include "xmc/lsp/positions.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tova_programs::xmc::lsp {

using document_pointer = std::shared_ptr<const checked_document>;

/// A document that the client has open.
struct buffer {
    std::string uri;
    std::string path;  ///< canonical; empty if the document is no file
    std::int64_t version = 0;
    std::string text;
    document_pointer checked;  ///< null after a change
};

class workspace final : public check_source {
public:
    /// The paths of the options are relative to each folder of the client. Without any, the folders
    /// themselves are checked.
    explicit workspace(check_options options) : m_options(std::move(options)) {}

    const check_options& options() const { return m_options; }

    void add_folder(const std::string& path);
    void remove_folder(const std::string& path);

    void open(const std::string& uri, std::int64_t version, std::string text);
    void close(const std::string& uri);

    /// Null if no such document is open.
    const buffer* find(const std::string& uri) const;

    /// What is open, by URI.
    const std::map<std::string, buffer>& buffers() const { return m_buffers; }

    /// Sets a new text. The document must be open.
    void change(const std::string& uri, std::int64_t version, std::string text);

    /// Files on the disk may have changed.
    void forget_disk() { ++m_generation; }

    /// Checks everything. Documents that are no files are checked by themselves.
    report check();

    /// The document of a URI, open or not. Null if there is none.
    document_pointer document_of(const std::string& uri);

    /// All documents, each once, in the order of their paths; one that is no file comes only as
    /// `own`.
    std::vector<document_pointer> documents(const document_pointer& own);

    /// The client's URI of a file, if it is open; otherwise one for its path.
    std::string uri_for(const std::string& path) const;

    std::vector<std::string> files(const std::vector<std::string>& paths,
                                   std::vector<std::string>& failures) override;
    bool has_file(const std::string& path) override;
    std::string bytes(const std::string& path) override;
    document_pointer document(const std::string& path) override;

private:
    struct kept_file {
        document_pointer checked;
        std::uint64_t generation = 0;
        std::int64_t changed = 0;  // nanoseconds
        std::int64_t size = 0;
        std::uint64_t number = 0;
    };

    std::vector<std::string> roots() const;
    bool is_below(const std::vector<std::string>& roots, const std::string& path) const;
    buffer* buffer_at(const std::string& canonical);
    document_pointer checked(buffer& of) const;
    void drop_unread();

    check_options m_options;
    std::vector<std::string> m_folders;
    std::map<std::string, buffer> m_buffers;   // by URI
    std::map<std::string, kept_file> m_files;  // by canonical path
    std::vector<std::string> m_listed;
    std::uint64_t m_generation = 1;
    std::uint64_t m_listed_generation = 0;
    std::uint64_t m_checked_generation = 0;
};

}  // namespace tova_programs::xmc::lsp
