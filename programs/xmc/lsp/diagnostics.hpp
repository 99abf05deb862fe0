/// @file
/// The findings of a check as diagnostics.
#pragma once

#include "xmc/lsp/protocol.hpp"
#include "xmc/lsp/workspace.hpp"

#include <functional>
#include <map>
#include <string>

namespace tova_programs::xmc::lsp {

/// The lines of the documents of one message to the client, each counted once.
class line_maps {
public:
    line_maps(workspace& files, encoding units) : m_files(files), m_units(units) {}

    /// The lines of a document, or of the file at a path.
    const line_map& of(const document_pointer& document);
    const line_map& of(const std::string& path);

private:
    struct entry {
        document_pointer document;
        line_map lines;
    };

    workspace& m_files;
    encoding m_units;
    std::map<const checked_document*, entry> m_entries;
};

/// One finding of the document with these lines.
json diagnostic_of(const finding& found, line_maps& maps, const workspace& files,
                   const client_features& client);

/// Keeps what the client was told, and tells it what is different.
class publisher {
public:
    using send_function = std::function<void(json params)>;

    /// Sends the diagnostics of each document that has others than before, or whose version is a
    /// new one, in the order of their URIs. A document without findings is sent if it is open or
    /// had some.
    void publish(const report& found, workspace& files, const client_features& client,
                 const send_function& send);

private:
    std::map<std::string, json> m_sent;  // what was sent, by URI
};

}  // namespace tova_programs::xmc::lsp
