/// @file
/// `tova-cfg set`, `unset` and `roundtrip`: commands that change a file, or show what a save by a
/// program would change.
#pragma once

#include "support/terminal.hpp"

#include <ostream>
#include <string>
#include <vector>

namespace tova_programs::cfg {

struct set_options {
    std::string file;
    std::string key;
    std::vector<std::string> values;
    std::string schema_path;
    bool is_array = false;
    bool creates = false;
    bool is_dry_run = false;
    bool as_json = false;
};

/// Changes one entry in place. The file is replaced atomically. The exit code is 1 if the schema
/// does not allow the value, or if the change cannot be made (see `with_value`). Raises
/// `file_error` if the file does not exist, unless `creates` is set.
int run_set(const set_options& options, std::ostream& out, std::ostream& errors,
            const style& colors);

struct unset_options {
    std::string file;
    std::vector<std::string> keys;
    bool is_dry_run = false;
    bool as_json = false;
};

/// Removes entries. The exit code is 1 if the file has no entry of a key.
int run_unset(const unset_options& options, std::ostream& out, std::ostream& errors,
              const style& colors);

struct roundtrip_options {
    std::string file;
    bool as_json = false;
};

/// Shows what a load and a save would do to a file. The exit code is 1 if settings would be lost,
/// added or changed, or comments lost.
int run_roundtrip(const roundtrip_options& options, std::ostream& out, const style& colors);

}  // namespace tova_programs::cfg
