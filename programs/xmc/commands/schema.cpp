#include "xmc/commands/schema.hpp"

#include "support/exit_code.hpp"
#include "support/text_file.hpp"
#include "xmc/model/options.hpp"
#include "xmc/output.hpp"

#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

// The options of each type come from the table of the format language, so that a schema accepts
// what `check` accepts. In RELAX NG the type of an argument decides which options it may have.
// XSD 1.0 cannot express that: there, an argument may have the options of all types, each with the
// values that it has in any of them.

namespace tova_programs::xmc {

namespace {

using json = nlohmann::ordered_json;

const char loader_form[] = R"rng(<?xml version="1.0" encoding="UTF-8"?>
<!-- What the loader accepts for every locale, as far as a grammar can say it. Made by tova-xmc schema. -->
<grammar xmlns="http://relaxng.org/ns/structure/1.0" datatypeLibrary="http://www.w3.org/2001/XMLSchema-datatypes">
  <start>
    <element name="xmc">
      <attribute name="version"><choice><value>1.0</value><value>1.1</value></choice></attribute>
      <mixed>
        <oneOrMore>
          <choice><ref name="catalog"/><ref name="include"/></choice>
        </oneOrMore>
      </mixed>
    </element>
  </start>
  <define name="catalog">
    <element name="catalog">
      <optional><attribute name="name"/></optional>
      <optional><attribute name="lang"/></optional>
      <mixed><zeroOrMore><ref name="msg"/></zeroOrMore></mixed>
    </element>
  </define>
  <define name="include">
    <element name="include">
      <optional><attribute name="file"><ref name="not-empty"/></attribute></optional>
      <zeroOrMore><attribute><anyName><except><name>file</name></except></anyName></attribute></zeroOrMore>
      <ref name="nothing"/>
    </element>
  </define>
  <define name="msg">
    <element name="msg">
      <optional><attribute name="name"/></optional>
      <optional><attribute name="meta"/></optional>
      <mixed>
        <zeroOrMore>
          <choice>
            <element name="br"><ref name="nothing"/></element>
            <element name="arg"><ref name="argument"/></element>
            <element name="argument"><ref name="argument"/></element>
          </choice>
        </zeroOrMore>
      </mixed>
    </element>
  </define>
  <define name="argument">
    <zeroOrMore><attribute><anyName/></attribute></zeroOrMore>
    <text/>
  </define>
  <define name="not-empty">
    <data type="string"><param name="minLength">1</param></data>
  </define>
  <!-- No whitespace either. -->
  <define name="nothing">
    <value type="string"></value>
  </define>
</grammar>
)rng";

const char strict_begin[] = R"rng(<?xml version="1.0" encoding="UTF-8"?>
<!-- What a catalog should be. Made by tova-xmc schema. -->
<grammar xmlns="http://relaxng.org/ns/structure/1.0" datatypeLibrary="http://www.w3.org/2001/XMLSchema-datatypes">
  <start>
    <element name="xmc">
      <attribute name="version"><choice><value>1.0</value><value>1.1</value></choice></attribute>
      <oneOrMore>
        <choice><ref name="catalog"/><ref name="include"/></choice>
      </oneOrMore>
    </element>
  </start>
  <define name="catalog">
    <element name="catalog">
      <attribute name="name"><ref name="not-empty"/></attribute>
      <attribute name="lang"><data type="string"><param name="pattern">LOCALE</param></data></attribute>
      <zeroOrMore><ref name="msg"/></zeroOrMore>
    </element>
  </define>
  <define name="include">
    <element name="include">
      <attribute name="file"><ref name="not-empty"/></attribute>
      <ref name="nothing"/>
    </element>
  </define>
  <define name="msg">
    <element name="msg">
      <attribute name="name"><ref name="not-empty"/></attribute>
      <optional><attribute name="meta"/></optional>
      <mixed>
        <zeroOrMore>
          <choice>
            <element name="br"><ref name="nothing"/></element>
            <ref name="arg"/>
          </choice>
        </zeroOrMore>
      </mixed>
    </element>
  </define>
  <define name="not-empty">
    <data type="string"><param name="minLength">1</param></data>
  </define>
  <!-- No whitespace either. -->
  <define name="nothing">
    <value type="string"></value>
  </define>
  <define name="arg">
    <element name="arg">
      <attribute name="name"><ref name="not-empty"/></attribute>
      <choice>
        <empty/>
)rng";

const char strict_end[] = R"rng(      </choice>
      <ref name="nothing"/>
    </element>
  </define>
</grammar>
)rng";

const char compact_begin[] = R"rnc(# What a catalog should be. Made by tova-xmc schema.
start = element xmc { attribute version { "1.0" | "1.1" }, (catalog | \include)+ }
catalog =
  element catalog {
    attribute name { not-empty },
    attribute lang { xsd:string { pattern = "LOCALE" } },
    msg*
  }
\include = element include { attribute file { not-empty }, nothing }
msg =
  element msg {
    attribute name { not-empty },
    attribute meta { text }?,
    mixed { (element br { nothing } | arg)* }
  }
not-empty = xsd:string { minLength = "1" }
# No whitespace either.
nothing = xsd:string ""
arg =
  element arg {
    attribute name { not-empty },
    (empty
)rnc";

const char compact_end[] = R"rnc(    ),
    nothing
  }
)rnc";

const char xsd_begin[] = R"xsd(<?xml version="1.0" encoding="UTF-8"?>
<!-- What a catalog should be, as far as XSD can say it: an option is allowed with every type. Made by tova-xmc schema. -->
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
  <xs:element name="xmc">
    <xs:complexType>
      <xs:choice maxOccurs="unbounded">
        <xs:element ref="catalog"/>
        <xs:element ref="include"/>
      </xs:choice>
      <xs:attribute name="version" use="required">
        <xs:simpleType><xs:restriction base="xs:token"><xs:enumeration value="1.0"/><xs:enumeration value="1.1"/></xs:restriction></xs:simpleType>
      </xs:attribute>
    </xs:complexType>
  </xs:element>
  <xs:element name="include">
    <xs:complexType><xs:attribute name="file" type="not-empty" use="required"/></xs:complexType>
  </xs:element>
  <xs:element name="catalog">
    <xs:complexType>
      <xs:sequence><xs:element ref="msg" minOccurs="0" maxOccurs="unbounded"/></xs:sequence>
      <xs:attribute name="name" type="not-empty" use="required"/>
      <xs:attribute name="lang" use="required">
        <xs:simpleType><xs:restriction base="xs:string"><xs:pattern value="LOCALE"/></xs:restriction></xs:simpleType>
      </xs:attribute>
    </xs:complexType>
  </xs:element>
  <xs:element name="msg">
    <xs:complexType mixed="true">
      <xs:choice minOccurs="0" maxOccurs="unbounded">
        <xs:element name="br"><xs:complexType/></xs:element>
        <xs:element ref="arg"/>
      </xs:choice>
      <xs:attribute name="name" type="not-empty" use="required"/>
      <xs:attribute name="meta" type="xs:string"/>
    </xs:complexType>
  </xs:element>
  <xs:simpleType name="not-empty">
    <xs:restriction base="xs:string"><xs:minLength value="1"/></xs:restriction>
  </xs:simpleType>
  <xs:element name="arg">
    <xs:complexType>
      <xs:attribute name="name" type="not-empty" use="required"/>
      <xs:attribute name="type">
        <xs:simpleType>
          <xs:restriction base="xs:token">
)xsd";

const char xsd_end[] = R"xsd(    </xs:complexType>
  </xs:element>
</xs:schema>
)xsd";

const char xml_catalog[] = R"xml(<?xml version="1.0" encoding="UTF-8"?>
<!-- Names for the schemas of XMC files. Made by tova-xmc schema. -->
<catalog xmlns="urn:oasis:names:tc:entity:xmlns:xml:catalog">
  <uri name="urn:tova:xmc:rng" uri="xmc.rng"/>
  <uri name="urn:tova:xmc:loader" uri="xmc-loader.rng"/>
  <uri name="urn:tova:xmc:rnc" uri="xmc.rnc"/>
  <uri name="urn:tova:xmc:xsd" uri="xmc.xsd"/>
</catalog>
)xml";

const char emacs_rules[] = R"xml(<?xml version="1.0" encoding="UTF-8"?>
<!-- For the variable rng-schema-locating-files of Emacs. Made by tova-xmc schema. -->
<locatingRules xmlns="http://thaiopensource.com/ns/locating-rules/1.0">
  <uri pattern="*.xmc" uri="xmc.rnc"/>
  <documentElement localName="xmc" uri="xmc.rnc"/>
</locatingRules>
)xml";

const char vscode_settings[] = R"json({
  "files.associations": { "*.xmc": "xml" },
  "xml.fileAssociations": [
    { "pattern": "**/*.xmc", "systemId": "xmc.xsd" }
  ]
}
)json";

const std::string locale_pattern = "[.]|[A-Za-z0-9]+(_[A-Za-z0-9]+)*(@[A-Za-z0-9]+)?";

const std::vector<std::pair<const char*, item_type>> usable_types = {
    {"value", item_type::text},          {"string", item_type::string},
    {"int", item_type::integer},         {"double", item_type::real},
    {"memory", item_type::memory},       {"memory_unit", item_type::memory_unit},
    {"metric", item_type::metric},       {"metric_unit", item_type::metric_unit},
    {"duration", item_type::duration},   {"mem", item_type::memory},
    {"mem_unit", item_type::memory_unit}};

std::string with_locale(std::string text) {
    return text.replace(text.find("LOCALE"), 6, locale_pattern);
}

// Up to 100, which is where `check` begins to call a field wide. Empty for an option with words.
std::string number_pattern(const option_rule& option) {
    if (option.kind == option_kind::natural)
        return "[0-9]{1,2}|100";
    return option.kind == option_kind::integer ? "-?([0-9]{1,2}|100)" : "";
}

std::vector<option_rule> useful_options(item_type type) {
    std::vector<option_rule> result;
    for (const option_rule& each : options_of(type))
        if (each.kind != option_kind::nothing)
            result.push_back(each);
    return result;
}

std::string relax_ng() {
    std::string result = with_locale(strict_begin);
    for (const auto& type : usable_types) {
        result += std::string("        <group>\n          <attribute name=\"type\"><value>") +
                  type.first + "</value></attribute>\n";
        for (const option_rule& option : useful_options(type.second)) {
            const std::string pattern = number_pattern(option);
            std::string values =
                "<data type=\"string\"><param name=\"pattern\">" + pattern + "</param></data>";
            if (pattern.empty()) {
                values = "<choice>";
                for (const std::string& word : words_of(option))
                    values += "<value type=\"string\">" + word + "</value>";
                values += "</choice>";
            }
            result += std::string("          <optional><attribute name=\"") + option.name + "\">" +
                      values + "</attribute></optional>\n";
        }
        result += "        </group>\n";
    }
    return result + strict_end;
}

std::string compact() {
    std::string result = with_locale(compact_begin);
    for (const auto& type : usable_types) {
        result += std::string("     | (attribute type { \"") + type.first + "\" }";
        for (const option_rule& option : useful_options(type.second)) {
            const std::string pattern = number_pattern(option);
            std::string values = "xsd:string { pattern = \"" + pattern + "\" }";
            if (pattern.empty()) {
                values.clear();
                for (const std::string& word : words_of(option))
                    values += (values.empty() ? "xsd:string \"" : " | xsd:string \"") + word + '"';
            }
            result += std::string(",\n        attribute ") + option.name + " { " + values + " }?";
        }
        result += ")\n";
    }
    return result + compact_end;
}

// An option that is a number in one type is one in all types.
std::string xsd() {
    std::string result = with_locale(xsd_begin);
    std::map<std::string, std::set<std::string>> facets;  // by option, for all types
    for (const auto& type : usable_types) {
        result += std::string("            <xs:enumeration value=\"") + type.first + "\"/>\n";
        for (const option_rule& option : useful_options(type.second)) {
            const std::string number = number_pattern(option);
            if (!number.empty())
                facets[option.name].insert("<xs:pattern value=\"" + number + "\"/>");
            for (const std::string& word : words_of(option))
                facets[option.name].insert("<xs:enumeration value=\"" + word + "\"/>");
        }
    }
    result += "          </xs:restriction>\n        </xs:simpleType>\n      </xs:attribute>\n";
    for (const auto& option : facets) {
        result += "      <xs:attribute name=\"" + option.first +
                  "\">\n        <xs:simpleType><xs:restriction base=\"xs:string\">";
        for (const std::string& facet : option.second)
            result += facet;
        result += "</xs:restriction></xs:simpleType>\n      </xs:attribute>\n";
    }
    return result + xsd_end;
}

struct schema_form {
    const char* name;
    const char* file;
    std::string text;
};

std::vector<schema_form> all_forms() {
    return {{"strict", "xmc.rng", relax_ng()},           {"loader", "xmc-loader.rng", loader_form},
            {"compact", "xmc.rnc", compact()},           {"xsd", "xmc.xsd", xsd()},
            {"catalog", "catalog.xml", xml_catalog},     {"emacs", "schemas.xml", emacs_rules},
            {"vscode", "settings.json", vscode_settings}};
}

}  // namespace

int run_schema(const schema_options& options, std::ostream& out, std::ostream& errors) {
    json written = json::array();
    const auto write = [&](const schema_form& form, const std::string& path) {
        write_file(path, form.text);
        written.push_back({{"form", form.name}, {"file", path}});
    };
    if (!options.folder.empty()) {
        if (::mkdir(options.folder.c_str(), 0777) != 0 && errno != EEXIST)
            throw file_error(options.folder + ": " + std::generic_category().message(errno));
        for (const schema_form& form : all_forms())
            write(form, options.folder + '/' + form.file);
        if (!options.as_json)
            errors << options.folder << ": " << written.size() << " files\n";
    } else {
        const bool is_file = !is_standard(options.output);
        for (const schema_form& form : all_forms()) {
            if (form.name != options.form)
                continue;
            if (is_file)
                write(form, options.output);
            else if (options.as_json)
                written.push_back({{"form", form.name}, {"text", form.text}});
            else
                out << form.text;
        }
    }
    if (options.as_json)
        write_json(out, written);
    return exit_clean;
}

}  // namespace tova_programs::xmc
