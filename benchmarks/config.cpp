// Configuration from disk, lookups by dotted keys, copies of a tree, and a command line.
//
// load: 10,000 entries in 100 sections, each library from a file in the form that it reads, until
// values can be looked up by key.
// lookup: keys of 1 to 6 segments. Ours go through a manager with three sources, of which the
// second has the key, and so do those of Poco. The others look into one tree or map. copy: the
// 10,000 loaded entries once more, independent of the first. command_line: twenty options, eight of
// them with values. The floors: reading the file and copying the loaded entries, copying the value
// that was found, and copying the twenty options.
#include <tova/config/commandline_item.hpp>
#include <tova/config/config_manager.hpp>
#include <tova/config/file_item.hpp>
#include <tova/config/std_config_dispatch.hpp>
#include <tova/system/files.hpp>

#include "scratch_folder.hpp"

#include <benchmark/benchmark.h>

#include <cctype>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#ifdef HAVE_BOOST_PROPERTY_TREE
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#endif
#ifdef HAVE_CLI11
#include <CLI/CLI.hpp>
#endif
#ifdef HAVE_INIH
#include <ini.h>
#endif
#ifdef HAVE_POCO
#include <Poco/Util/IniFileConfiguration.h>
#include <Poco/Util/LayeredConfiguration.h>
#include <Poco/Util/MapConfiguration.h>
#include <Poco/Util/Option.h>
#include <Poco/Util/OptionProcessor.h>
#include <Poco/Util/OptionSet.h>
#endif
#ifdef HAVE_QT6
#include <QSettings>
#include <QString>
#include <QVariant>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif
#ifdef HAVE_TOMLPLUSPLUS
#include <toml++/toml.h>
#endif

namespace {

using tova::config::commandline_item;
using tova::config::config_manager;
using tova::config::file_item;
using tova::config::std_config_dispatch;
using tova::strings::ustring8;
using tova::types::variant;

const int sections = 100;
const int entries = 100;
const int deepest = 6;

// One configuration in the two forms that the libraries read.
class scratch_files {
public:
    scratch_files() {
        std::ofstream ini(plain()), quoted(toml());
        for (int s = 0; s < sections; ++s) {
            ini << "[section" << s << "]\n";
            quoted << "[section" << s << "]\n";
            for (int e = 0; e < entries; ++e) {
                ini << "key_" << e << "=value_" << s << '_' << e << '\n';
                quoted << "key_" << e << " = \"value_" << s << '_' << e << "\"\n";
            }
        }
    }
    std::string plain() const { return m_folder / "plain.cfg"; }
    std::string toml() const { return m_folder / "quoted.toml"; }

private:
    bench_support::scratch_folder m_folder;
};

scratch_files& files() {
    static scratch_files all;
    return all;
}

// A key of some segments: "alpha", "alpha.beta" and so on.
std::string key_of(int depth, char separator) {
    const char* const names[] = {"alpha", "beta", "gamma", "delta", "epsilon", "zeta"};
    std::string key;
    for (int i = 0; i < depth; ++i)
        key += (i == 0 ? "" : std::string(1, separator)) + names[i];
    // Each depth has its own last name, so that a value and a section never share a key.
    return key + "_" + std::to_string(depth);
}

void load_tova(benchmark::State& state) {
    const ustring8 name = files().plain();
    for (auto _ : state) {
        file_item item(name);
        item.load();
        if (item.get_value("section99.key_99") == nullptr)
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_tova)->Name("load/10000_entries/tova");

// Our code without its fast paths: it copies a string for each token and walks from the root for
// each entry. The file has no comments, quotes or arrays.
struct plain_item : tova::config::base_config_item {
    plain_item* clone() const override { return new plain_item(*this); }
    void read(const ustring8& text) {
        unsigned position = 0;
        tova::config::config_token token;
        const auto next = [&] { return get_token(text, position, token); };
        ustring8 prefix, key, value;
        while (position < text.size()) {
            auto type = next();
            if (type == token.T_NEWLINE)
                continue;
            if (type == token.T_SBRACKET) {
                prefix.clear();
                while ((type = next()) != token.T_EBRACKET)
                    prefix += token.text;
                prefix += '.';
                continue;
            }
            for (key.clear(); type != token.T_EQ; type = next())
                key += token.text;
            value.clear();
            while ((type = next()) != token.T_NEWLINE && type != token.T_END)
                value += token.text;
            set(std::make_pair(ustring8(prefix + key), variant(value)), 0);
        }
    }
};

void load_plain(benchmark::State& state) {
    const ustring8 name = files().plain();
    for (auto _ : state) {
        plain_item item;
        ustring8 text;
        tova::system::load_file(name, text);
        item.read(text);
        if (item.get_value("section99.key_99") == nullptr)
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_plain)->Name("load/10000_entries/plain");

void load_floor(benchmark::State& state) {
    const ustring8 name = files().plain();
    file_item item(name);
    item.load();
    for (auto _ : state) {
        ustring8 text;
        tova::system::load_file(name, text);
        const file_item copy(item);
        benchmark::DoNotOptimize(text.data());
        benchmark::DoNotOptimize(&copy);
    }
}
BENCHMARK(load_floor)->Name("load/10000_entries/floor");

void lookup_floor(benchmark::State& state, int) {
    const variant value("value");
    for (auto _ : state)
        benchmark::DoNotOptimize(variant(value));
}

void lookup_tova(benchmark::State& state, int depth) {
    const char* const arguments[] = {"tool", "-verbose", "-port=80", nullptr};
    const char* const environment[] = {"HOME=/root", "LANG=C", nullptr};
    config_manager manager;
    manager.init(std_config_dispatch(3, arguments, environment, "", ""));
    manager.load();
    const auto file = manager.get_config_item("standard file");
    for (int each = 1; each <= deepest; ++each)
        file->set(key_of(each, '.'), variant("value"), 0);
    const ustring8 key = key_of(depth, '.');
    const variant none;
    if (manager.get_value(key, none).as_string() != "value")
        state.SkipWithError("not found");
    for (auto _ : state)
        benchmark::DoNotOptimize(manager.get_value(key, none));
}

// Our code without its fast paths: each segment of a key becomes a string, which the map searches
// for.
struct plain_tree {
    const plain_tree* find(const ustring8& key) const {
        ustring8 tail;
        const auto child = children.find(cut(key, tail));
        if (child == children.end())
            return nullptr;
        return tail.empty() ? &child->second : child->second.find(tail);
    }
    void set(const ustring8& key, const char* text) {
        ustring8 tail;
        plain_tree& child = children[cut(key, tail)];
        if (tail.empty())
            child.value = variant(text);
        else
            child.set(tail, text);
    }
    static ustring8 cut(const ustring8& key, ustring8& tail) {
        const std::size_t end = key.find_first_of("./\\");
        ustring8 head(key, 0, end);
        for (char& character : head)
            character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        if (end != ustring8::npos)
            tail.assign(key, end + 1, ustring8::npos);
        return head;
    }

    std::map<ustring8, plain_tree> children;
    variant value;
};

__attribute__((noipa)) variant plain_value(const std::vector<plain_tree>& sources,
                                           const ustring8& key, variant none) {
    for (const plain_tree& source : sources)
        if (const plain_tree* const found = source.find(key))
            return found->value;
    return none;
}

void lookup_plain(benchmark::State& state, int depth) {
    std::vector<plain_tree> sources(3);
    for (const char* const key : {"application.name", "application.name.raw", "verbose", "port"})
        sources[0].set(key, "80");
    for (int each = 1; each <= deepest; ++each)
        sources[1].set(key_of(each, '.'), "value");
    sources[2].set("home", "/root");
    sources[2].set("lang", "C");
    const ustring8 key = key_of(depth, '.');
    const variant none;
    if (plain_value(sources, key, none).as_string() != "value")
        state.SkipWithError("not found");
    for (auto _ : state)
        benchmark::DoNotOptimize(plain_value(sources, key, none));
}

void copy_tova(benchmark::State& state) {
    file_item item(files().plain());
    item.load();
    for (auto _ : state) {
        const file_item copy(item);
        benchmark::DoNotOptimize(&copy);
    }
}
BENCHMARK(copy_tova)->Name("copy/10000_entries/tova");

const std::vector<const char*>& command_line() {
    static const std::vector<const char*> arguments = {
        "tool", "-a",    "-b",     "-c",       "-d",    "-e",   "-f",     "-g",
        "-h1",  "-i",    "-j",     "-k",       "-l",    "-m=1", "-n=two", "-o=3.5",
        "-p=x", "-q=yy", "-r=zzz", "-s=a.b.c", "-t=99", nullptr};
    return arguments;
}

void command_line_tova(benchmark::State& state) {
    const auto& arguments = command_line();
    for (auto _ : state) {
        commandline_item item(static_cast<unsigned>(arguments.size() - 1), arguments.data());
        item.load();
        benchmark::DoNotOptimize(item.get_value("t"));
    }
}
BENCHMARK(command_line_tova)->Name("command_line/20_options/tova");

// Our code without its fast paths, for flags and single values: it copies a string for each token
// and walks from the root for each entry.
struct plain_line : tova::config::base_config_item {
    plain_line* clone() const override { return new plain_line(*this); }
    void read(const std::vector<const char*>& arguments) {
        const variant name(arguments[0]);
        for (const char* const key : {"application.name", "application.name.raw"})
            set(key, name, 0);
        for (std::size_t i = 1; arguments[i] != nullptr; ++i)
            read_option(arguments[i]);
    }
    void read_option(const ustring8& text) {
        unsigned position = 1;
        tova::config::config_token token;
        ustring8 key, value;
        auto type = get_token(text, position, token);
        for (; type != token.T_END && type != token.T_EQ; type = get_token(text, position, token))
            key += token.text;
        if (type == token.T_END) {
            set(key, 1);
            return;
        }
        while (get_token(text, position, token) != token.T_END)
            value += token.text;
        set(std::make_pair(key, variant(value)), 0);
    }
};

void command_line_plain(benchmark::State& state) {
    for (auto _ : state) {
        plain_line item;
        item.read(command_line());
        if (item.get_value("t") == nullptr)
            state.SkipWithError("not found");
    }
}
BENCHMARK(command_line_plain)->Name("command_line/20_options/plain");

void command_line_floor(benchmark::State& state) {
    const auto& arguments = command_line();
    commandline_item item(static_cast<unsigned>(arguments.size() - 1), arguments.data());
    item.load();
    for (auto _ : state) {
        const commandline_item copy(item);
        benchmark::DoNotOptimize(&copy);
    }
}
BENCHMARK(command_line_floor)->Name("command_line/20_options/floor");

// One benchmark for each depth, with the same names for each library.
void register_lookups(const char* library, void (*function)(benchmark::State&, int)) {
    for (int depth = 1; depth <= deepest; ++depth)
        benchmark::RegisterBenchmark(
            ("lookup/" + std::to_string(depth) + "_segments/" + library).c_str(),
            [function, depth](benchmark::State& state) { function(state, depth); });
}

#ifdef HAVE_BOOST_PROPERTY_TREE
using boost::property_tree::ptree;

void load_boost(benchmark::State& state) {
    for (auto _ : state) {
        ptree tree;
        boost::property_tree::read_ini(files().plain(), tree);
        if (!tree.get_optional<std::string>("section99.key_99"))
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_boost)->Name("load/10000_entries/boost_property_tree");

void lookup_boost(benchmark::State& state, int depth) {
    ptree tree;
    for (int each = 1; each <= deepest; ++each)
        tree.put(key_of(each, '.'), "value");
    const std::string key = key_of(depth, '.');
    for (auto _ : state)
        benchmark::DoNotOptimize(tree.get<std::string>(key));
}

void copy_boost(benchmark::State& state) {
    ptree tree;
    boost::property_tree::read_ini(files().plain(), tree);
    for (auto _ : state) {
        const ptree copy(tree);
        benchmark::DoNotOptimize(&copy);
    }
}
BENCHMARK(copy_boost)->Name("copy/10000_entries/boost_property_tree");
#endif

#ifdef HAVE_CLI11
void load_cli11(benchmark::State& state) {
    for (auto _ : state) {
        std::ifstream file(files().plain());
        const std::vector<CLI::ConfigItem> items = CLI::ConfigINI().from_config(file);
        if (items.size() < sections * entries)
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_cli11)->Name("load/10000_entries/cli11");

void command_line_cli11(benchmark::State& state) {
    CLI::App app;
    bool flags[12] = {};
    std::string values[8];
    for (int i = 0; i < 12; ++i)
        app.add_flag(std::string("-") + "abcdefguijkl"[i], flags[i]);
    for (int i = 0; i < 8; ++i)
        app.add_option(std::string("-") + "mnopqrst"[i], values[i]);
    std::vector<const char*> arguments = command_line();
    arguments[8] = "-u";
    arguments.pop_back();
    for (auto _ : state) {
        app.parse(static_cast<int>(arguments.size()), const_cast<char**>(arguments.data()));
        benchmark::DoNotOptimize(values[7].data());
    }
}
BENCHMARK(command_line_cli11)->Name("command_line/20_options/cli11");
#endif

#ifdef HAVE_INIH
typedef std::map<std::string, std::string> flat_map;

// What its C++ reader does with a value: one map, with "section=name" in lower case as the key.
int keep(void* target, const char* section, const char* name, const char* value) {
    std::string key = std::string(section) + "=" + name;
    for (char& character : key)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    (*static_cast<flat_map*>(target))[key] = value;
    return 1;
}

void load_inih(benchmark::State& state) {
    for (auto _ : state) {
        flat_map values;
        ini_parse(files().plain().c_str(), keep, &values);
        if (values.count("section99=key_99") == 0)
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_inih)->Name("load/10000_entries/inih");
#endif

#ifdef HAVE_POCO
using Poco::AutoPtr;
using Poco::Util::IniFileConfiguration;
using Poco::Util::LayeredConfiguration;
using Poco::Util::MapConfiguration;

void load_poco(benchmark::State& state) {
    for (auto _ : state) {
        const AutoPtr<IniFileConfiguration> configuration(
            new IniFileConfiguration(files().plain()));
        if (!configuration->hasProperty("section99.key_99"))
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_poco)->Name("load/10000_entries/poco");

void lookup_poco(benchmark::State& state, int depth) {
    AutoPtr<MapConfiguration> line(new MapConfiguration), file(new MapConfiguration),
        environment(new MapConfiguration);
    line->setString("verbose", "");
    line->setString("port", "80");
    environment->setString("home", "/root");
    for (int each = 1; each <= deepest; ++each)
        file->setString(key_of(each, '.'), "value");
    AutoPtr<LayeredConfiguration> all(new LayeredConfiguration);
    all->add(line, 0);
    all->add(file, 1);
    all->add(environment, 2);
    const std::string key = key_of(depth, '.');
    for (auto _ : state)
        benchmark::DoNotOptimize(all->getString(key));
}

// As its application class does: each option goes into a configuration under its full name.
void command_line_poco(benchmark::State& state) {
    Poco::Util::OptionSet options;
    for (int i = 0; i < 20; ++i) {
        const std::string name(1, "abcdefguijklmnopqrst"[i]);
        Poco::Util::Option option("option_" + name, name);
        if (i >= 12)
            option.argument("value");
        options.addOption(option);
    }
    std::vector<const char*> arguments = command_line();
    arguments[8] = "-u";
    arguments.pop_back();
    for (auto _ : state) {
        Poco::Util::OptionProcessor processor(options);
        AutoPtr<MapConfiguration> configuration(new MapConfiguration);
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            std::string name, value;
            processor.process(arguments[i], name, value);
            configuration->setString(name, value);
        }
        if (!configuration->hasProperty("option_t"))
            state.SkipWithError("not found");
    }
}
BENCHMARK(command_line_poco)->Name("command_line/20_options/poco");
#endif

#ifdef HAVE_QT6
// A file that has not changed is not read again, so each turn sets another modification time.
void touch(const std::string& path, long turn) {
    const timespec times[2] = {{1000000000 + turn, 0}, {1000000000 + turn, 0}};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

void load_qt(benchmark::State& state) {
    const QString name = QString::fromStdString(files().plain());
    long turn = 0;
    for (auto _ : state) {
        touch(files().plain(), ++turn);
        const QSettings settings(name, QSettings::IniFormat);
        // It reads a section only when its keys are first requested.
        if (settings.allKeys().size() < sections * entries)
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_qt)->Name("load/10000_entries/qsettings");

void lookup_qt(benchmark::State& state, int depth) {
    QSettings settings(QString::fromStdString(files().plain() + ".unsaved"), QSettings::IniFormat);
    for (int each = 1; each <= deepest; ++each)
        settings.setValue(QString::fromStdString(key_of(each, '/')), QString("value"));
    const QString key = QString::fromStdString(key_of(depth, '/'));
    for (auto _ : state)
        benchmark::DoNotOptimize(settings.value(key));
    settings.clear();
    settings.sync();
    ::unlink((files().plain() + ".unsaved").c_str());
}
#endif

#ifdef HAVE_TOMLPLUSPLUS
void load_toml(benchmark::State& state) {
    for (auto _ : state) {
        const toml::table table = toml::parse_file(files().toml());
        if (!table.at_path("section99.key_99"))
            state.SkipWithError("not loaded");
    }
}
BENCHMARK(load_toml)->Name("load/10000_entries/tomlplusplus");

void lookup_toml(benchmark::State& state, int depth) {
    std::string text;
    for (int each = 1; each <= deepest; ++each)
        text += key_of(each, '.') + " = \"value\"\n";
    const toml::table table = toml::parse(text);
    const std::string key = key_of(depth, '.');
    for (auto _ : state)
        benchmark::DoNotOptimize(table.at_path(key).value<std::string>());
}

void copy_toml(benchmark::State& state) {
    const toml::table table = toml::parse_file(files().toml());
    for (auto _ : state) {
        const toml::table copy(table);
        benchmark::DoNotOptimize(&copy);
    }
}
BENCHMARK(copy_toml)->Name("copy/10000_entries/tomlplusplus");
#endif

const bool lookups_are_registered = [] {
    register_lookups("tova", lookup_tova);
    register_lookups("floor", lookup_floor);
    register_lookups("plain", lookup_plain);
#ifdef HAVE_BOOST_PROPERTY_TREE
    register_lookups("boost_property_tree", lookup_boost);
#endif
#ifdef HAVE_POCO
    register_lookups("poco", lookup_poco);
#endif
#ifdef HAVE_QT6
    register_lookups("qsettings", lookup_qt);
#endif
#ifdef HAVE_TOMLPLUSPLUS
    register_lookups("tomlplusplus", lookup_toml);
#endif
    return true;
}();

}  // namespace
