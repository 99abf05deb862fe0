#include "xmc/lsp/vocabulary.hpp"

#include <algorithm>

namespace tova_programs::xmc::lsp {

namespace {

const std::vector<element_words> elements = {
    {"", "", {}, {"xmc"}, ""},
    {"xmc",
     "The root of a catalog file. It holds catalogs and includes.",
     {{"version", "1.1 or 1.0, which mean the same."}},
     {"catalog", "include"},
     "<xmc version=\"1.1\">\n  $0\n</xmc>"},
    {"catalog",
     "Messages of one catalog in one locale. The pieces of a catalog are merged.",
     {{"name", "The name by which a program asks for the catalog."},
      {"lang", "The locale of the messages, such as de or de_AT; \".\" is for all locales."}},
     {"msg"},
     "<catalog name=\"$1\" lang=\"$2\">\n  $0\n</catalog>"},
    {"include",
     "Reads another file at this point, as if it were part of this one.",
     {{"file", "The file to read. A relative name starts from the folder of this file."}},
     {},
     "<include file=\"$1\"/>$0"},
    {"msg",
     "A message: text, line breaks and arguments.",
     {{"name", "The key by which a program asks for the message."},
      {"meta", "A note for translators and tools. It is not shown."}},
     {"arg", "br"},
     "<msg name=\"$1\">$0</msg>"},
    {"arg",
     "The place of a value that the program passes.",
     {{"name", "The name of the value. It comes first, and it is not translated."},
      {"type", "How the value is formatted; without a type it is shown as a string."}},
     {},
     "<arg name=\"$1\"/>$0"},
    {"br", "A line break. It is always empty.", {}, {}, "<br/>$0"},
};

const std::vector<described_word> types = {
    {"string", "The value as it is."},
    {"int", "An integer."},
    {"double", "A number with decimals."},
    {"duration", "A number of seconds as a time span."},
    {"memory", "The number of a memory size; memory_unit shows its unit."},
    {"memory_unit", "The unit of a memory size. Give it the options of its number."},
    {"metric", "The number of a metric quantity; metric_unit shows its prefix."},
    {"metric_unit", "The prefix of a metric quantity. Give it the options of its number."},
    {"value", "No value: the string in name itself."},
};

const std::vector<described_word> options = {
    {"base", "dec, default, spaced_dec, hex, oct or bin."},
    {"fieldsize", "The width of the number in characters."},
    {"precision", "The number of decimals."},
    {"short_form", "true for short names of the units, false for long ones."},
    {"target_unit", "The unit to show. Without it, the largest one that leaves 1 or more."},
    {"base_unit", "The unit of the value that the program passes."},
};

}  // namespace

const element_words* find_element(std::string_view name) {
    if (name == "argument")
        name = "arg";
    const auto found =
        std::find_if(elements.begin(), elements.end(),
                     [name](const element_words& each) { return each.name == name; });
    return found == elements.end() ? nullptr : &*found;
}

const std::vector<described_word>& described_types() {
    return types;
}

const char* option_text(std::string_view option) {
    const auto found =
        std::find_if(options.begin(), options.end(),
                     [option](const described_word& each) { return each.name == option; });
    return found == options.end() ? "" : found->text;
}

}  // namespace tova_programs::xmc::lsp
