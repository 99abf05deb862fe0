#pragma once

#include <tova/abi.hpp>
#include <tova/config/base_config_item.hpp>
#include <tova/strings/ustring.hpp>

namespace TOVA_2_18 {
namespace config {

/// A text file as a source of configuration, by custom with the extension ".cfg".
///
/// `docs/configuration.md` tells what the lines of such a file mean and what a save keeps. Every
/// file gives some tree, and a file that cannot be read or written is no failure. All values are
/// `ustring8` texts. The name of the source is "standard file", for each file alike.
class TOVA_API file_item : public base_config_item {
public:
    file_item(const strings::ustring8& filename);
    file_item(const file_item& other);
    virtual ~file_item() TOVA_NOTHROW;

    /// Chooses the file and reads it.
    ///
    /// The first of `items` whose key `cfg_file` names a file that opens for reading decides. If
    /// there is none and no name was given to the constructor, it is the first whose
    /// `application.name.raw` with ".cfg" behind it names one. A directory or a pipe is no file
    /// here. Always true.
    virtual bool load(const config_item_list& items);

    /// As `load_file`. Always true.
    virtual bool load();

    /// Both write the file, always true.
    ///
    /// Written is what lies in a section, in the byte order of the keys, which are in lower case.
    /// Keys at the top level and comments are lost. A write that fails goes unnoticed. A symbolic
    /// link is not written; a pipe is, and the call waits until something reads from it.
    virtual bool save(const config_item_list& items);
    virtual bool save();

    /// Empties the tree; the name of the file stays.
    virtual void unload();

    virtual file_item* clone() const;

    /// A copy of the file's name, empty if none was given or found.
    strings::ustring8 get_filename();

    /// Adds the entries of the file to the tree. Without a name, or for a file that cannot be read,
    /// that is a link, a directory or a pipe, or has 2 GiB or more, nothing changes. What a link
    /// points to is not opened, nor is a pipe.
    void load_file();

    /// Moves `position` in `text` to the next line end, or to the end of the text.
    ///
    /// The text is tokenized on the way, so a line end between double quotes doesn't count.
    void parse_comment(const strings::ustring8& text, unsigned int& position);

private:
    strings::ustring8 m_filename;
};

/// The text, between double quotes if it holds a blank, a carriage return, a tab or a line feed.
///
/// Nothing inside is escaped: a text with a double quote and a blank doesn't read back the same.
TOVA_API strings::ustring8 quote_value(const strings::ustring8& text);

}  // namespace config
}  // namespace TOVA_2_18
