/// @file
/// The source that reads and writes a `.cfg` file.
///
///     file_item file("tool.cfg");
///     file.load();
///     if (const config_node* port = file.get_value("server.port"))
///         listen(port->second.as_int());
///
/// An item belongs to one thread at a time. Nothing guards a file that two items or two processes
/// write at the same time.
#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {

/// A text file as a source of configuration; its extension is ".cfg" by convention.
///
/// `docs/configuration.md` describes the syntax and what a save keeps. Any file is valid, and a
/// file that cannot be read or written is not an error. All values are of type `ustring8`. Every
/// file has the same source name, "standard file".
class TOVA_API file_item : public base_config_item {
public:
    /// The file of that name, which is not opened yet. An empty name leaves the choice to `load`.
    file_item(const strings::ustring8& filename);

    /// Copies the tree and the file's name.
    file_item(const file_item& other);
    ~file_item() TOVA_NOTHROW override;

    /// Chooses the file and reads it.
    ///
    /// The file is the first one that the key `cfg_file` of any of `items` names and that can be
    /// opened for reading. Without one, the name that the item has already stays. If that name is
    /// empty, the file is the first one that a value of `application.name.raw` with ".cfg" appended
    /// names and that can be opened. Directories and pipes are skipped. Returns true.
    ///
    /// On a second load all sources are filled, this one and the environment included, and so is
    /// the name: `cfg_file` may then lead to another file than before.
    bool load(const config_item_list& items) override;

    /// Calls `load_file`. Returns true.
    bool load() override;

    /// Replaces the file by the sections of the tree and their entries, in byte order of the
    /// lower-case keys. Keys at the top level, entries below other entries and comments are lost.
    ///
    /// Contract: an entry is written under every section whose name has as many bytes as that of
    /// its own section. Sections with names of equal length therefore get each other's entries;
    /// give them names of different lengths. A file of 2.6 kB with 150 such sections of one entry
    /// each becomes 35 MB after two rounds of load and save. If names contain brackets, repeated
    /// rounds grow a file without bound: one of 2.6 kB reached 309 MB in four rounds.
    ///
    /// Contract: after a failed load, the tree is empty and a save empties the file; both return
    /// true. docs/configuration.md shows a check to make before the load.
    ///
    /// A symbolic link is not written. A pipe is, and the call waits until something reads from it.
    /// Returns true, also if nothing could be written.
    bool save(const config_item_list& items) override;
    bool save() override;

    /// Empties the tree; the name of the file stays.
    void unload() override;

    /// A copy on the heap with its heap mark set and count 0.
    file_item* clone() const override;

    /// A copy of the file's name. Empty if none was given or found.
    strings::ustring8 get_filename();

    /// Adds the entries of the file to the tree. Nothing changes without a name, or if the file
    /// cannot be read, is a link, a directory or a pipe, or has 2 GiB or more. The target of a link
    /// is not opened, and a pipe does not block the call.
    ///
    /// Contract: nothing reports that the file could not be read, and a save then empties it.
    ///
    /// After `std::bad_alloc`, an item that had no entries still has none. An item with entries may
    /// also have some of those in the file; another load completes it.
    void load_file();

    /// Moves `position`, a byte index, to the next line end in `text`, or to the end of `text`.
    ///
    /// The bytes on the way are read as tokens, so a line end between double quotes doesn't count.
    void parse_comment(const strings::ustring8& text, unsigned int& position);

private:
    strings::ustring8 m_filename;
};

/// Returns the string, between double quotes if it contains a space, tab, carriage return or line
/// feed.
///
/// Nothing inside is escaped: a string with a double quote and a space doesn't read back the same.
TOVA_API strings::ustring8 quote_value(const strings::ustring8& text);

}  // namespace config
}  // namespace TOVA_2_18
