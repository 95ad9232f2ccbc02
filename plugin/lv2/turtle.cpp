#include "turtle.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iterator>
#include <string_view>
#include <vector>

#include "port_list.h"

namespace kv7::orv::lv2 {
namespace {

constexpr const char* prefixes = R"(@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
)";

std::string uri(std::string_view fragment = {}) {
    std::string text = std::string("<") + plugin_uri;
    if (!fragment.empty()) text.append("#").append(fragment);
    return text + '>';
}

std::string quoted(std::string_view text) {
    std::string literal = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') literal += '\\';
        literal += c;
    }
    return literal + '"';
}

// The shortest decimal of the same value, always with a point: some hosts read an integer in a
// preset as the bits of a float.
std::string decimal(double value) {
    std::array<char, 400> text;
    const auto written =
        std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed).ptr;
    std::string number(text.begin(), written);
    return number.find('.') == std::string::npos ? number + ".0" : number;
}

std::string in_lower_case(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string group_of(std::string_view category) {
    return uri("group-" + in_lower_case(std::string(category)));
}

std::string_view unit_of(std::string_view unit) {
    constexpr std::array<std::array<std::string_view, 2>, 4> units{
        {{"dB", "units:db"}, {"s", "units:s"}, {"Hz", "units:hz"}, {"degrees", "units:degree"}}};
    const auto found = std::find_if(units.begin(), units.end(),
                                    [unit](const auto& row) { return row[0] == unit; });
    return found == units.end() ? std::string_view() : (*found)[1];
}

// From three decades on, as for delay times from flanger to echo, a linear scale is of no use.
bool is_logarithmic(const attribute_row& row) {
    return row.low > 0.0 && row.high >= 1000.0 * row.low;
}

// Writes the list of ports, one property at a time: begin opens the next port, end closes the list.
class port_writer {
public:
    explicit port_writer(std::ostream& out) : out_(out) {}

    void begin(const char* types, std::string_view symbol, std::string_view name) {
        out_ << (index_ == 0 ? "\tlv2:port [\n" : "\t] , [\n");
        out_ << "\t\ta " << types << " ;\n";
        line("lv2:index", std::to_string(index_++));
        line("lv2:symbol", quoted(symbol));
        line("lv2:name", quoted(name));
    }
    void line(std::string_view property, std::string_view value) {
        out_ << "\t\t" << property << ' ' << value << " ;\n";
    }
    void end() { out_ << "\t] .\n"; }

private:
    std::ostream& out_;
    int index_ = 0;
};

void write_audio_ports(port_writer& ports) {
    constexpr struct {
        const char* types;
        const char* symbol;
        const char* name;
        const char* group;
        const char* designation;
    } rows[] = {
        {"lv2:InputPort , lv2:AudioPort", "in_left", "In, left", "input", "pg:left"},
        {"lv2:InputPort , lv2:AudioPort", "in_right", "In, right", "input", "pg:right"},
        {"lv2:OutputPort , lv2:AudioPort", "out_left", "Out, left", "output", "pg:left"},
        {"lv2:OutputPort , lv2:AudioPort", "out_right", "Out, right", "output", "pg:right"},
    };
    static_assert(std::size(rows) == audio_port_count);
    for (const auto& row : rows) {
        ports.begin(row.types, row.symbol, row.name);
        ports.line("pg:group", uri(row.group));
        ports.line("lv2:designation", row.designation);
    }
}

void write_scale_points(port_writer& ports, const attribute_row& row) {
    for (std::size_t i = 0; i < row.value_names.size(); ++i)
        ports.line("lv2:scalePoint", "[ rdfs:label " + quoted(row.value_names[i]) +
                                         " ; rdf:value " + std::to_string(i) + " ]");
}

// Clicks are to be expected where one of these is set while sound passes.
bool clicks(const attribute_row& row) {
    return row.kind == attribute_kind::toggle || row.kind == attribute_kind::choice;
}

void write_control_port(port_writer& ports, control_port port) {
    const attribute_row& row = attribute_table[port.attribute];
    const bool toggle = row.kind == attribute_kind::toggle;
    ports.begin("lv2:InputPort , lv2:ControlPort", symbol_of(port), label_of(port));
    ports.line("rdfs:comment", quoted(row.info.description));
    ports.line("lv2:portProperty", "lv2:connectionOptional");
    ports.line("lv2:default", decimal(row.default_value));
    ports.line("lv2:minimum", decimal(row.low));
    ports.line("lv2:maximum", decimal(toggle ? 1.0 : row.high));
    if (toggle) ports.line("lv2:portProperty", "lv2:toggled");
    if (row.kind == attribute_kind::choice)
        ports.line("lv2:portProperty", "lv2:integer , lv2:enumeration");
    if (clicks(row)) ports.line("lv2:portProperty", "pprops:causesArtifacts");
    if (is_logarithmic(row)) ports.line("lv2:portProperty", "pprops:logarithmic");
    if (const std::string_view unit = unit_of(row.unit); !unit.empty())
        ports.line("units:unit", unit);
    if (*row.info.category != '\0') ports.line("pg:group", group_of(row.info.category));
    write_scale_points(ports, row);
}

void write_trigger_port(port_writer& ports, const char* name, const char* comment) {
    std::string label = name;
    label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(label[0])));
    ports.begin("lv2:InputPort , lv2:ControlPort", name, label);
    ports.line("rdfs:comment", quoted(comment));
    ports.line("lv2:default", "0");
    ports.line("lv2:minimum", "0");
    ports.line("lv2:maximum", "1");
    ports.line("lv2:portProperty",
               "lv2:toggled , pprops:trigger , pprops:causesArtifacts , lv2:connectionOptional");
}

// A group for the inputs, one for the outputs, one for each category of attributes.
void write_groups(std::ostream& out) {
    const auto group = [&out](const std::string& which, const char* types, std::string_view name) {
        out << '\n'
            << which << "\n\ta " << types << " ;\n\tlv2:symbol "
            << quoted(in_lower_case(std::string(name)) + "_group") << " ;\n\tlv2:name "
            << quoted(name) << " .\n";
    };
    group(uri("input"), "pg:StereoGroup , pg:InputGroup", "Input");
    group(uri("output"), "pg:StereoGroup , pg:OutputGroup", "Output");
    std::vector<std::string_view> written{""};
    for (const attribute_row& row : attribute_table) {
        const std::string_view category = row.info.category;
        if (std::find(written.begin(), written.end(), category) != written.end()) continue;
        written.push_back(category);
        group(group_of(category), "pg:InputGroup", category);
    }
}

}  // namespace

void write_manifest(std::ostream& out, const std::string& binary, std::span<const preset> presets) {
    out << prefixes << '\n'
        << uri() << "\n\ta lv2:Plugin ;\n\tlv2:binary <" << binary
        << "> ;\n\trdfs:seeAlso <vesk.ttl> .\n";
    for (const preset& p : presets)
        out << '\n'
            << uri("preset-" + p.name) << "\n\ta pset:Preset ;\n\tlv2:appliesTo " << uri()
            << " ;\n\trdfs:label " << quoted(p.title) << " ;\n\trdfs:seeAlso <presets.ttl> .\n";
}

void write_plugin(std::ostream& out, const version& of_project) {
    out << prefixes << '\n'
        << uri("project") << "\n\ta doap:Project ;\n\tdoap:name \"Vesk\" ;\n"
        << "\tdoap:maintainer [ foaf:name " << quoted(class_metadata::author) << " ] .\n";
    write_groups(out);
    out << '\n'
        << uri() << "\n\ta lv2:Plugin , lv2:DelayPlugin ;\n\tdoap:name \"Vesk\" ;\n"
        << "\trdfs:comment " << quoted(class_metadata::description) << " ;\n"
        << "\tlv2:project " << uri("project") << " ;\n"
        << "\tlv2:minorVersion " << 2 * (100 * of_project.major + of_project.minor) << " ;\n"
        << "\tlv2:microVersion " << 2 * of_project.patch << " ;\n"
        << "\tlv2:optionalFeature lv2:hardRTCapable ;\n"
        << "\tpg:mainInput " << uri("input") << " ;\n"
        << "\tpg:mainOutput " << uri("output") << " ;\n";
    port_writer ports(out);
    write_audio_ports(ports);
    for (const control_port port : control_ports()) write_control_port(ports, port);
    write_trigger_port(ports, trigger_names[clear], "Empties the delay lines and the reverb.");
    write_trigger_port(ports, trigger_names[reset],
                       "Returns the whole effect to its initial state; settings stay.");
    ports.end();
}

void write_presets(std::ostream& out, std::span<const preset> presets) {
    out << prefixes;
    for (const preset& p : presets) {
        out << '\n'
            << uri("preset-" + p.name) << "\n\ta pset:Preset ;\n\tlv2:appliesTo " << uri()
            << " ;\n\trdfs:label " << quoted(p.title) << " ;\n\trdfs:comment "
            << quoted(p.description) << " ;\n\tlv2:port ";
        const char* between = "";
        for (const control_port port : control_ports()) {
            out << between << "[ lv2:symbol " << quoted(symbol_of(port)) << " ; pset:value "
                << decimal(p.values[port.attribute][port.element]) << " ]";
            between = " ,\n\t\t";
        }
        out << " .\n";
    }
}

}  // namespace kv7::orv::lv2
