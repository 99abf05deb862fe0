#include "cfg/check/rules.hpp"

// The loader accepts every file, so no rule is about syntax errors. An error loses a setting or
// turns it into another one. A warning is most likely a mistake. A note matters only to programs
// that save their settings.

namespace tova_programs::cfg {

namespace {

const rule table[] = {
    // --- Keys ---
    {"no-equals", severity::error, "a line without \"=\"",
     "An entry is KEY = VALUE. A line without \"=\" is joined to the key on the next line, even if "
     "that line is a header: \"verbose\" and \"port = 80\" give the key verboseport. At the end of "
     "the file it is lost. A \":\" does not separate a key from its value. A value that goes on in "
     "the next line must be in quotes, or be an array with a comma at the line end."},
    {"operator", severity::error, "an operator in the place of \"=\"",
     "\"==\", \":=\", \"+=\", \"-=\", \"*=\", \"/=\", \"<=\" and \">=\" do not end a key. The key "
     "continues on the next line, up to a plain \"=\". The fix writes \"=\" for \"==\" and "
     "\":=\"."},
    {"colon-in-key", severity::warning, "\":\" before the \"=\"",
     "A key goes on up to the \"=\", so url: http://host/?a=b is the key url:http://host/?a with "
     "the value b. Write \"=\" after the key. If the \":\" belongs to the key, put the key in "
     "double quotes."},
    {"semicolon-comment", severity::error, "\";\" as a comment",
     "A comment begins with \"#\" or \"//\". A line that begins with \";\" is joined to the key on "
     "the next line, and a \";\" after a value is part of the value. The fix writes \"#\"."},
    {"no-key", severity::error, "\"=\" without a key",
     "What follows the \"=\" is read as the next key."},
    {"byte-order-mark", severity::error, "a byte order mark at the beginning",
     "The loader does not recognize it, so it becomes part of the first key, or turns a header or "
     "comment in the first line into a key. The fix removes it."},
    {"open-header", severity::error, "a header without \"]\"",
     "Without a \"]\" the header goes on in the next lines, up to a \"]\" or the end of the file, "
     "and the entries and headers in between are lost."},
    {"text-after-header", severity::warning, "text after a header",
     "Text after a header on the same line is read as a key. A comment may follow a header."},
    {"duplicate-key", severity::warning, "a key that is set twice",
     "The later value wins. Letter case does not matter, and \".\", \"/\" and \"\\\" are the same: "
     "Server/Port and server.port are one key. A shorter array leaves the last elements of a "
     "longer one."},
    {"key-and-section", severity::warning, "a key with a value and longer keys",
     "A key with a value should not begin other keys: a source that has server.port.admin also has "
     "server.port, with the value true, and hides server.port in the sources after it. A save "
     "loses the longer key."},

    // --- Values ---
    {"empty-value", severity::warning, "a key without a value",
     "Nothing is stored, not even an empty string; the program sees no such key. An earlier value "
     "of the key stays."},
    {"url-cut", severity::error, "\"//\" in a value without quotes",
     "\"//\" starts a comment, so page = https://example.org/ is the value https: alone. Put the "
     "value in double quotes. The fix does that."},
    {"comment-in-value", severity::warning, "a comment directly after a value",
     "\"#\", \"//\" and \"*/\" start a comment anywhere outside quotes: color = #ff0000 has no "
     "value, and a#b is a. If it belongs to the value, put the value in double quotes; otherwise "
     "write a space before the comment. The fix puts a value in quotes if it is one word that "
     "begins with \"#\", as a color does. It leaves password = a#b, which may be either."},
    {"lost-space", severity::warning, "a space that is lost",
     "Spaces and tabs outside double quotes are dropped: Ann Lee is AnnLee, and [my section] is "
     "mysection. Put a value, key or section with a space in double quotes. The fix does that for "
     "values."},
    {"open-quote", severity::error, "an unclosed double quote",
     "The string goes on to the end of the file, with all entries in it."},
    {"quote-over-lines", severity::warning, "a string over more than one line",
     "A line end in double quotes is part of the string. Often one of the quotes is missing or one "
     "too many, and what should be entries is text."},
    {"header-in-string", severity::error, "a string over more than one line with a header",
     "A line of the string is a section header. Most likely a quote before it is missing or one "
     "too many: the header is text, and the entries after it are text or in another section."},
    {"escape", severity::warning, "a backslash that stays in the value",
     "Nothing is unescaped: in \"say \\\"hi\\\"\" the backslashes stay in the value. A value "
     "cannot have a double quote without a backslash before it."},
    {"quote-in-comment", severity::error, "a double quote in a comment",
     "Comments are read like the rest of the file, so a double quote in one opens a string, and "
     "the comment goes on after the closing quote, in another line or at the end of the file. "
     "Write comments without double quotes, or with pairs of them in a line."},
    {"carriage-return", severity::error, "a carriage return that ends no line",
     "Lines end with LF or CRLF. A CR alone is part of a key, value or comment, and so are the "
     "entries and headers after it."},
    {"not-utf8", severity::warning, "bytes that are not UTF-8",
     "The bytes are used as they are. A file in another encoding, or a NUL byte, shows as wrong "
     "characters where the value is used."},

    // --- Arrays ---
    {"unfinished-array", severity::error, "an array that ends with a comma",
     "After a comma an array goes on in the next line that is neither empty nor a comment, so the "
     "next entry or header becomes its last element. At the end of the file, or before \"\", the "
     "array is not stored, and its elements come first in the next array. An element in brackets, "
     "such as [::1], must be in double quotes at the start of a line."},
    {"array-gets-more", severity::error, "an array with the elements of another one",
     "An array further up ends with an empty element. It is not stored, but its other elements are "
     "the first ones of this array."},

    // --- Saves ---
    {"save-loses-key", severity::note, "a key that a save loses",
     "A program that saves its settings writes only what is in a section: keys before the first "
     "header, or after an empty one, are lost, and so are keys below a key with a value."},
    {"equal-length-sections", severity::note, "sections with names of equal length",
     "A save writes an entry under each section whose name is as long as its own section's. Give "
     "sections names of different lengths if a program saves the file."},
    {"save-changes-value", severity::note, "a value that a save changes",
     "A save writes quotes only around values with whitespace. Other values that need quotes read "
     "back differently: those with a comment mark, and elements with a comma. An array of more "
     "than ten elements is written in the order 0, 1, 10, 2."},
    {"save-grows", severity::note, "a file that grows with every save",
     "Each load and save makes the file larger, because sections take each other's entries, or "
     "because a name with a bracket comes back as several names. 150 sections with names of equal "
     "length make 35 MB of 2.6 kB in two rounds."},

    // --- Other readers ---
    {"reads-differently", severity::warning, "an entry that another reader reads differently",
     "Only with --written-for. Readers of INI files differ: Python's configparser and inih keep "
     "double quotes and spaces, end a key at a \":\" too, do not know \"//\" and arrays, and join "
     "an indented line to the value before it. A \"#\" after a value starts a comment for neither "
     "of them, and a \";\" after a space only for inih. tova-cfg convert writes a settings file "
     "with the values that the other reader sees."},

    // --- The schema ---
    {"unknown-key", severity::error, "a key that the program does not know",
     "The schema does not declare it. Most often it is misspelled, or in the wrong section."},
    {"wrong-value", severity::error, "a value of the wrong type",
     "The schema declares another type, other words or a range. An array has [] after its key."},
    {"missing-key", severity::error, "a required key is missing",
     "The schema declares it with required = yes, and no file sets it."},
    {"alias-cycle", severity::error, "aliases that lead back to themselves",
     "The lookup ends with the value of the last alias, which is the name of a key."},
};

}  // namespace

rule_list rules() {
    return table;
}

}  // namespace tova_programs::cfg
