#include <tova/tova.hpp>

// catalogs.message("app", "in a comment") is not a use.
void run(const tova::i18n::message_catalogs& catalogs) {
    catalogs.message("app", "hello");
    catalogs.message("app",
                     "misspelled");
    if (catalogs.has_message("dialog", "yes"))
        catalogs.catalog("dialog").message("maybe");
    const char* const names[] = {"january", "files", "product"};
    other_message("app", "not a call");
}
