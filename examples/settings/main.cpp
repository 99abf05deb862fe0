// Prints its settings and where each comes from, counts its runs and saves the count:
//
//     settings.example [-cfg_file=FILE] [-locale=LOCALE] [-server.port=PORT] ...
//
// A setting is taken from the command line, else from the file, else from the environment. Without
// cfg_file the file is settings.cfg in the working folder, after the program's own name. Messages
// come from a catalog in the language of the setting "locale", or of the variable LANG.

#include <tova/tova.hpp>

#include <iostream>
#include <string>
#include <vector>

using tova::config::config_item_list;
using tova::config::config_manager;
using tova::config::file_item;
using tova::config::std_config_dispatch;
using tova::config::user_item;
using tova::generic::argument;
using tova::generic::varg_list;
using tova::i18n::message_catalogs;
using tova::i18n::message_t;
using tova::strings::ustring8;
using tova::types::nil;
using tova::types::variant;

namespace {

const unsigned int alias = 4;  // the flag that makes the value of a node another key

// The sources of any application, and after them short names for some keys.
class sources : public std_config_dispatch {
public:
    using std_config_dispatch::std_config_dispatch;

    bool setup(config_item_list& items) const override {
        std_config_dispatch::setup(items);
        user_item names;
        names.set("port", variant("server.port"), alias);
        names.set("host", variant("server.host"), alias);
        items.push_back(names.clone());
        return true;
    }
    sources* clone() const override { return new sources(*this); }
};

class report {
public:
    report(config_manager& settings, const message_catalogs& texts)
        : m_settings(settings), m_texts(texts) {}

    void print() {
        const ustring8 program = value("application.name", "").as_string();
        const ustring8 file = file_name();
        say(file.empty() ? "title_without_file" : "title",
            varg_list(argument("program", program), argument("file", file)));

        print_setting("server.host", "localhost");
        print_setting("server.port", "80");
        print_setting("server.timeout", "30");
        print_setting("server.scheme", "http");
        print_setting("home", "/");
        print_short_name("port", "server.port", "80");
        print_folders("paths.search");
        print_section("session");
        count_this_run("run.count");
    }

private:
    variant value(const ustring8& key, const variant& otherwise) {
        return m_settings.get_value(key, otherwise);
    }

    ustring8 file_name() {
        const auto item = m_settings.get_config_item("standard file");
        return static_cast<file_item&>(*item).get_filename();
    }

    // The name of the source that decides; the first one that has the key wins.
    ustring8 source_of(const ustring8& key) {
        for (const char* id : {"command line", "standard file", "enviroment"})
            if (m_settings.get_config_item(id)->get_value(key) != nullptr)
                return id;
        return "default";
    }

    void say(const ustring8& key, const varg_list& arguments, const char* indent = "") {
        std::cout << indent << m_texts.message("settings", key).as_string(arguments) << '\n';
    }

    void print_setting(const ustring8& key, const char* otherwise) {
        const ustring8 source = m_texts.message("sources", source_of(key)).as_string(varg_list());
        say("setting",
            varg_list(argument("key", key), argument("value", value(key, otherwise)),
                      argument("source", source)),
            "  ");
    }

    // A short name has the value of the key that it is an alias of, from whatever source.
    void print_short_name(const ustring8& name, const ustring8& key, const char* otherwise) {
        say("short_name", varg_list(argument("short", name), argument("key", key),
                                    argument("value", value(name, otherwise))));
    }

    void print_folders(const ustring8& key) {
        std::vector<variant> folders;
        m_settings.get_array(key, folders);
        say("folders", varg_list(argument("count", static_cast<unsigned long>(folders.size()))));
        int number = 0;
        for (const variant& folder : folders)
            say("folder", varg_list(argument("number", ++number), argument("folder", folder)),
                "  ");
    }

    // Some entries have a message of their own, which says what the number means.
    void print_section(const ustring8& section) {
        std::vector<std::pair<ustring8, variant>> entries;
        m_settings.get_key_value_array(section, entries, true);
        say("section", varg_list());
        for (const auto& entry : entries) {
            const ustring8 own = "entry." + entry.first;
            say(m_texts.message("settings", own) == nil ? ustring8("entry") : own,
                varg_list(argument("name", entry.first), argument("value", entry.second)), "  ");
        }
    }

    void count_this_run(const ustring8& key) {
        const int count = value(key, 0).as_int() + 1;
        const ustring8 file = file_name();
        m_settings.get_config_item("standard file")->set(key, variant(count), 0);
        m_settings.save();
        say(file.empty() ? "not_saved" : "saved",
            varg_list(argument("count", count), argument("file", file)));
    }

    config_manager& m_settings;
    const message_catalogs& m_texts;
};

// "de_AT.UTF-8@euro" is de_AT; no locale, and the names of the C locale, are English.
ustring8 wanted_locale(config_manager& settings) {
    const variant from_environment = settings.get_value("lang", variant("en"));
    const std::string name = settings.get_value("locale", from_environment).as_ustring();
    const std::string locale = name.substr(0, name.find_first_of(".@"));
    return locale.empty() || locale == "C" || locale == "POSIX" ? "en" : locale;
}

}  // namespace

int main(int count, char** words, char** variables) {
    config_manager settings;
    settings.init(sources(count, words, variables, "", ""));
    settings.load();

    message_catalogs texts;
    const variant folder = settings.get_value("catalogs", TOVA_EXAMPLE_FOLDER "/catalogs");
    auto loaded = texts.load(folder.as_string(), wanted_locale(settings));
    if (loaded.type != message_catalogs::no_error) {
        std::cerr << loaded << '\n';
        return 1;
    }
    report(settings, texts).print();
}
