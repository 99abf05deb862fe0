#include "xmc/rules.hpp"

// Errors are what the library's loader refuses, for some locale at least. Warnings are what it
// takes silently and most likely gets wrong. Notes are worth a look.

namespace tova_programs::xmc {

namespace {

const rule table[] = {
    // --- The XML ---
    {"xml-header", severity::error, "no XML header at the beginning",
     "The first line of a catalog is <?xml version=\"1.0\" encoding=\"UTF-8\"?>, and the root "
     "element follows it. Only a byte order mark may come first, no space and no empty line."},
    {"xml-not-closed", severity::error, "an element, comment or section without its end",
     "Every element ends with its end tag or with />, in the right order. The loader notices a "
     "missing end only where the enclosing element ends, often hundreds of lines further down; "
     "this finding names the element that lacks its end."},
    {"xml-stray-end", severity::error, "an end tag without a start tag",
     "No element of that name is open here. Remove the end tag, or look for the start tag before "
     "it."},
    {"xml-unexpected-character", severity::error, "an unexpected character",
     "Usually a tag lacks its \">\" or an attribute its quote, or a name begins with something "
     "else than a letter. Names consist of letters, digits and \"_\". <!DOCTYPE ...> and a second "
     "<? are not allowed. In a text, write &lt; for \"<\"."},
    {"xml-missing-quote", severity::error, "a value that is not in quotes",
     "The value of an attribute is in double or single quotes, and the same quote ends it."},
    {"xml-missing-equals", severity::error, "an attribute without a value",
     "An attribute is NAME=\"VALUE\". A name consists of letters, digits and \"_\"; the "
     "characters \"-\", \".\" and \":\" end it, so xml:lang and data-x are not possible."},
    {"xml-duplicate-attribute", severity::error, "the same attribute twice in one element",
     "Remove one of them."},
    {"xml-second-root", severity::error, "a second root element",
     "A file has one <xmc>. Put all catalogs into it."},
    {"unescaped-ampersand", severity::error, "\"&\" that begins no reference",
     "Write &amp; for the character. The references are &lt; &gt; &amp; &quot; &apos; &nbsp; and "
     "numbers up to 127 such as &#65; or &#x41;. There are no others: write \xC3\xBC instead of "
     "&uuml;. The fix writes &amp; where a space follows."},
    {"unescaped-greater", severity::error, "\">\" where a text begins",
     "A text begins at the start of the message, after an element and after two spaces. There, "
     "\">\" must be written as &gt;. The fix does that."},

    // --- The structure ---
    {"not-xmc", severity::error, "the root element is not <xmc>",
     "A program that reads a folder reads every file whose name ends in .xmc or .xml, and stops "
     "at one that is no catalog. Move other XML files away, or give them another extension."},
    {"bad-version", severity::error, "a missing or unknown version",
     "<xmc> has the attribute version=\"1.1\" (or \"1.0\", which means the same), and no other."},
    {"no-catalog", severity::error, "a file without a catalog",
     "A file with neither <catalog> nor <include> is refused, and so is a file that includes it."},
    {"unknown-element", severity::error, "an element that is not allowed here",
     "<xmc> holds <catalog> and <include>, <catalog> holds <msg>, <msg> holds text, <br/> and "
     "<arg/>. There is no markup in messages: write &lt;b&gt; if the program expects tags in the "
     "text."},
    {"unknown-attribute", severity::error, "an attribute that the element does not have",
     "<xmc> has version, <catalog> has name and lang, <msg> has name and meta, <br> has none. "
     "Notes for translators go into meta or a comment."},
    {"comment-after-tag", severity::error, "a comment directly after a start tag",
     "Directly after the \">\" of xmc, catalog, msg or br a comment is read as an attribute. Put "
     "a space or a line end between them; at the beginning of a message it is not shown. The fix "
     "inserts a space."},
    {"text-msg", severity::error, "a text or comment that is exactly \"msg\"",
     "It ends the message. Write &nbsp;msg, or rephrase the sentence."},
    {"br-not-empty", severity::error, "content in <br>", "Write <br/>."},
    {"element-in-arg", severity::error, "an element in <arg>",
     "What is between <arg> and </arg> is not shown and may be an example, but an element in it "
     "ends the argument early. Write <arg name=\"...\"/>."},
    {"include-not-empty", severity::error, "whitespace or content in <include>",
     "Write <include file=\"...\"/>."},
    {"include-missing", severity::error, "an included file that cannot be read",
     "A relative name starts from the folder of the file that includes it. Letter case counts, "
     "and a symbolic link is not read."},
    {"include-invalid", severity::error, "an included file with an error",
     "An invalid included file makes every file that includes it invalid. Its own findings say "
     "what is wrong with it."},
    {"include-cycle", severity::error, "a file that includes itself",
     "It does so directly or through other files, and the loader refuses all of them."},
    {"include-depth", severity::warning, "includes nested too deeply",
     "Included files are read within each other, and a chain of some thousand exhausts the stack. "
     "More than 16 levels are reported. Include files side by side."},
    {"include-fan-out", severity::warning, "a file that reads too many others",
     "A file that is included twice is read twice, and so is all that it includes, so that a few "
     "files can become thousands. More than 1000 reads from one file are reported."},
    {"include-outside", severity::warning, "an include that leaves the folder",
     "The included file is not below the folder that is checked. It is missing where the folder "
     "is installed, and a catalog from elsewhere can read any file that way."},
    {"include-read-twice", severity::warning, "an included file that is also read by itself",
     "A program that reads the folder reads every .xmc and .xml file, included ones as well, and "
     "which of two equal messages wins depends on the order of the folder. Give included files "
     "another extension, such as .part."},
    {"include-without-file", severity::warning, "<include> without a file",
     "It reads nothing. Write <include file=\"...\"/>."},
    {"file-link", severity::error, "a catalog that is a symbolic link",
     "The loader does not follow it and reports a file without an XML header."},

    // --- The file ---
    {"nul-byte", severity::warning, "a NUL byte",
     "A NUL byte is text like any other, and ends the message for programs that use C strings. "
     "The file was perhaps saved as UTF-16: save it as UTF-8."},
    {"not-utf8", severity::warning, "bytes that are not UTF-8",
     "The loader keeps them as they are, and conversions to UTF-16 and UTF-32 fail. Save the file "
     "as UTF-8."},
    {"crlf", severity::warning, "line ends with CR and LF",
     "Each line end is two whitespace characters, so a single one becomes a space where a file "
     "with LF keeps it. Save the file with LF."},
    {"ignored-text", severity::warning, "text outside of messages",
     "Text between the elements of <xmc> and <catalog> is ignored. It is perhaps the rest of a "
     "message that ended early."},

    // --- Catalogs and keys ---
    {"lang-missing", severity::warning, "a catalog without lang",
     "It is never read. Messages that need no translation have lang=\".\"."},
    {"lang-never-matches", severity::warning, "a lang that no program asks for",
     "Locales are written as de or de_AT, with exactly these capitals, because they are compared "
     "byte by byte: EN is not en. A country or script is never searched for by itself."},
    {"lang-separator", severity::warning, "\"-\" or \".\" in lang",
     "The loader reads them as \"_\", but a program that asks which locales a catalog has does "
     "not find them. The fix writes \"_\"."},
    {"lang-modifier", severity::note, "\"@\" in lang",
     "A modifier belongs to the part before it: sr@latin is found by a program that asks for "
     "exactly sr@latin, and sr_RS@latin falls back on sr, which is in the other script."},
    {"catalog-without-name", severity::warning, "a catalog without a name",
     "Programs find its messages under the empty name only."},
    {"key-missing", severity::warning, "a message without a name",
     "Programs find it under the empty key only."},
    {"duplicate-key", severity::warning, "a message given twice for one locale",
     "Within one file the first one is kept. Of two files the one read later wins, and the order "
     "of the files in a folder is undefined. Remove one."},
    {"empty-message", severity::note, "a message without any text",
     "Nothing is shown, and the message of a more general locale is hidden."},

    // --- Texts ---
    {"reference-above-127", severity::warning, "a character reference above 127",
     "It stands for a single byte, which is not the character and not UTF-8; above 255 it is the "
     "byte 255. Write the character itself. The fix does that."},
    {"octal-reference", severity::warning, "a character reference with a leading 0",
     "A decimal reference that begins with 0 is octal: &#010; is the byte 8, and &#09; is a NUL "
     "byte, because 9 is no octal digit. Leave out the zeros."},
    {"leading-space-lost", severity::warning, "spaces at the beginning of a message",
     "Whitespace at the beginning is dropped, even a single space. If the space matters, write "
     "&nbsp;."},
    {"double-space-lost", severity::warning, "two spaces that become one",
     "Two or more whitespace characters in a row become one space. If they matter, write &nbsp;."},
    {"trailing-space", severity::warning, "a line end before </msg>",
     "Whitespace at the end of a message is kept as one space. Write </msg> directly after the "
     "last word. The fix does that, since a line end is never meant as a space."},
    {"line-end-kept", severity::warning, "a line end within a text that is kept",
     "A line that is broken without indentation keeps its line end. Indent the next line, or "
     "write <br/> if the line end is meant."},
    {"comment-swallows-space", severity::warning, "a comment between an argument and a space",
     "The space after the comment is lost. Put it before the comment. The fix does that."},
    {"cdata-space", severity::warning, "whitespace before a CDATA section",
     "It is shown as it is written, in addition to the one space that it becomes elsewhere. Write "
     "the section directly after what precedes it, or after a single space in a text."},

    // --- Arguments ---
    {"arg-without-name", severity::warning, "an argument without a name",
     "It shows the first unnamed value that the program passes, whatever that is."},
    {"attribute-before-name", severity::warning, "an option before name",
     "The name must come first: options before it are lost. The fix moves it."},
    {"unknown-type", severity::warning, "an unknown type",
     "The loader takes it for a string, so the value is shown without any format."},
    {"reserved-type", severity::warning, "a type that is always shown as ?invalid?",
     "The types number, time and date are reserved. Let the program pass a string instead, or use "
     "int, double or duration."},
    {"unknown-option", severity::warning, "an option that the type does not have",
     "The argument is shown as ?invalid?. The options are: int: base, fieldsize; double: "
     "precision, fieldsize; duration: precision, short_form; memory and memory_unit: target_unit, "
     "base_unit, precision, fieldsize; metric and metric_unit: base_unit, target_unit, "
     "short_form, precision, fieldsize."},
    {"shortened-option", severity::warning, "an option or word that is not written out",
     "Options and their words may be shortened to any prefix, which means the first word that "
     "fits. It saves little and hides mistakes. The fix writes it out."},
    {"empty-option", severity::warning, "an option without a value",
     "At the end of the options it makes the argument ?invalid?; before another one it means the "
     "first word of its table, or 0. Leave the option out."},
    {"unread-option", severity::warning, "an option without an effect",
     "String arguments have no options, fieldsize is not read where precision is 0, and an "
     "argument of the type value shows its options as part of its text."},
    {"bad-option-value", severity::warning, "a value that the option does not have",
     "An unknown word makes the argument ?invalid?; a number that cannot be read is 0, and is "
     "read up to its first other character."},
    {"repeated-option", severity::warning, "an option given twice through a short form",
     "A second base does not undo all of the first, nor does short_form=\"false\" an earlier "
     "\"true\" in a duration. Write each option once."},
    {"wide-field", severity::warning, "an unusually wide field",
     "There is no upper limit: fieldsize=\"2000000000\" makes a string of two gigabytes. More "
     "than 100 characters or decimals are reported."},
    {"unit-pair", severity::warning, "a number and its unit with different options",
     "The two choose their unit independently, so they must have the same options, or the number "
     "may be shown with the wrong unit."},
    {"argument-mismatch", severity::warning, "other arguments than in the reference locale",
     "The program passes the arguments of the original message. One of another name is shown as "
     "?invalid?, and one that is missing loses a value. Names are not translated. The reference "
     "is en, or what --reference says. The plural forms zero, one and two may leave out the "
     "number."},
    {"argument-type-mismatch", severity::warning,
     "an argument of another type than in the reference locale",
     "Arguments are perhaps in the wrong order: \"%s von %d\" for \"%d of %s\". If the order "
     "differs, "
     "write \"%2$s von %1$d\" in a PO file, or the same names as the reference in a catalog. A "
     "number "
     "that is shown as a string loses its format."},
};

}  // namespace

rule_list rules() {
    return table;
}

}  // namespace tova_programs::xmc
