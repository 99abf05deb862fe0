/// @file
/// `tova-xmc check`: every finding in a set of catalogs.
///
/// A check reads files through a `check_source`. The plain one reads the disk; an editor's has its
/// unsaved texts instead of the files that are open.
#pragma once

#include "support/findings.hpp"
#include "xmc/model/document.hpp"

#include <memory>
#include <string>
#include <vector>

namespace tova_programs::xmc {

struct check_options {
    std::vector<std::string> paths;
    std::string reference = "en";     ///< whose arguments the other locales must have
    bool requires_reference = false;  ///< whether it is an error that no catalog has it
    std::vector<std::string> only;
    std::vector<std::string> ignored;
};

/// Whether the options want to hear of a finding.
bool is_reported(const check_options& options, const finding& found);

/// A document with the findings that it has by itself. It is constant once it is made.
struct checked_document {
    checked_document(std::string path, std::string bytes);

    document file;
    std::vector<finding> findings;  ///< with their lines and columns
};

/// The files of a check.
class check_source {
public:
    virtual ~check_source() = default;

    /// The files for the paths of the options. Adds a reason to `failures` for a path that does not
    /// exist, and for a folder without catalogs.
    virtual std::vector<std::string> files(const std::vector<std::string>& paths,
                                           std::vector<std::string>& failures);

    /// Whether there is such a file. A symbolic link is none, as for the loader.
    virtual bool has_file(const std::string& path);

    /// The content of a file. Raises `file_error`.
    virtual std::string bytes(const std::string& path);

    /// The same, checked by itself.
    virtual std::shared_ptr<const checked_document> document(const std::string& path);
};

/// Checks the files, those that they include, and what they say together. Unless the source keeps
/// documents, only one is in memory at a time, beside an index of all messages.
///
/// A path that cannot be read is a failure of the report, and the others are still checked. Raises
/// `file_error` if no catalog has a required reference.
report check(const check_options& options, check_source& source);

/// The same for the files on the disk.
report check(const check_options& options);

struct check_command {
    check_options check;
    std::string explained;
    bool lists_rules = false;
    bool fixes = false;
    bool is_dry_run = false;
    std::string fail_on = "warning";  ///< error, warning, note or never
    report_format format = report_format::text;
};

/// Runs the command and returns the exit code.
int run_check(const check_command& command, std::ostream& out, std::ostream& errors,
              const style& colors);

}  // namespace tova_programs::xmc
