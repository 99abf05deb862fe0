#include <tova/tova.hpp>

void run(const tova::i18n::message_catalogs& cats, long n, bool is_few) {
    cats.message("words", "fi" "les." /* joined */ "one");
    cats.message("words",
                 "fi"  // and over lines
                 "les.other");
    cats.message("words", "files." + category(n, "x"));
    cats.message("words", prefix(n) + ".other");
    cats.message("words", is_few ? "files.few" : "files.many");
    cats.message("words", ustring8("hits") + "." + form(n));
    cats.message(u8"words", tova::strings::ustring8(u8"wrong"));
    cats.catalog("words").message("a" "b");
    cats.message("words", key_of(1'000'000));
    cats.message("words", R"(ra"w)"s);
    cats.message("words", variable);
}
