#include "turtle.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <string_view>
#include <vector>

#include "inline_display.h"
#include "port_list.h"

namespace kv7::orv::lv2 {
namespace {

constexpr const char* prefixes = R"(@prefix atom: <http://lv2plug.in/ns/ext/atom#> .
@prefix doap: <http://usefulinc.com/ns/doap#> .
@prefix foaf: <http://xmlns.com/foaf/0.1/> .
@prefix lv2: <http://lv2plug.in/ns/lv2core#> .
@prefix pg: <http://lv2plug.in/ns/ext/port-groups#> .
@prefix pprops: <http://lv2plug.in/ns/ext/port-props#> .
@prefix pset: <http://lv2plug.in/ns/ext/presets#> .
@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .
@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .
@prefix time: <http://lv2plug.in/ns/ext/time#> .
@prefix units: <http://lv2plug.in/ns/extensions/units#> .
@prefix urid: <http://lv2plug.in/ns/ext/urid#> .
)";

std::string uri(std::string_view fragment = {}) {
    std::string text = std::string("<") + plugin_uri;
    if (!fragment.empty()) text.append("#").append(fragment);
    return text + '>';
}

std::string in_quotes(std::string_view text) {
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

std::string capitalised(std::string text) {
    if (text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
}

std::string_view unit_of(std::string_view unit) {
    constexpr std::array<std::array<std::string_view, 2>, 4> units{
        {{"dB", "units:db"}, {"s", "units:s"}, {"Hz", "units:hz"}, {"degrees", "units:degree"}}};
    const auto found = std::find_if(units.begin(), units.end(),
                                    [unit](const auto& row) { return row[0] == unit; });
    return found == units.end() ? std::string_view() : (*found)[1];
}

// Where ears judge by ratios: times and frequencies over more than a decade, as from flanger to
// echo.
bool is_logarithmic(const control_port& port) {
    const std::string_view unit = port.unit;
    return (unit == "s" || unit == "Hz") && port.low > 0.0 && port.high >= 10.0 * port.low;
}

// Writes the list of ports, one property at a time: begin opens the next port, end closes the list.
class port_writer {
public:
    explicit port_writer(std::ostream& out) : out_(out) {}

    void begin(const char* types, std::string_view symbol, std::string_view name) {
        out_ << (index_ == 0 ? "\tlv2:port [\n" : "\t] , [\n");
        out_ << "\t\ta " << types << " ;\n";
        line("lv2:index", std::to_string(index_++));
        line("lv2:symbol", in_quotes(symbol));
        line("lv2:name", in_quotes(name));
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

void write_event_port(port_writer& ports) {
    ports.begin("lv2:InputPort , atom:AtomPort", "events", "Events");
    ports.line("rdfs:comment", in_quotes("The host's tempo."));
    ports.line("atom:bufferType", "atom:Sequence");
    ports.line("atom:supports", "time:Position");
    ports.line("lv2:designation", "lv2:control");
    ports.line("lv2:portProperty", "lv2:connectionOptional");
}

void write_range(port_writer& ports, double low, double high) {
    ports.line("lv2:minimum", decimal(low));
    ports.line("lv2:maximum", decimal(high));
}

void write_unit(port_writer& ports, std::string_view unit) {
    if (const std::string_view known = unit_of(unit); !known.empty())
        ports.line("units:unit", known);
}

void write_control_port(port_writer& ports, const control_port& port) {
    ports.begin("lv2:InputPort , lv2:ControlPort", port.symbol, port.name);
    ports.line("lv2:shortName", in_quotes(port.short_name));
    ports.line("rdfs:comment", in_quotes(port.comment));
    ports.line("lv2:portProperty", "lv2:connectionOptional");
    ports.line("lv2:default", decimal(port.standard));
    write_range(ports, port.low, port.high);
    write_unit(ports, port.unit);
    if (port.kind == attribute_kind::toggle) ports.line("lv2:portProperty", "lv2:toggled");
    if (port.kind == attribute_kind::choice)
        ports.line("lv2:portProperty", "lv2:integer , lv2:enumeration");
    // Not pprops:causesArtifacts, where a switch may click: a host then doesn't automate it.
    if (is_logarithmic(port)) ports.line("lv2:portProperty", "pprops:logarithmic");
    if (port.own == enabled) ports.line("lv2:designation", "lv2:enabled");
    if (port.own == free_wheeling) {
        ports.line("lv2:designation", "lv2:freeWheeling");
        ports.line("lv2:portProperty", "pprops:notOnGUI");
    }
    for (std::size_t i = 0; i < port.value_names.size(); ++i)
        ports.line("lv2:scalePoint", "[ rdfs:label " + in_quotes(capitalised(port.value_names[i])) +
                                         " ; rdf:value " + std::to_string(i) + " ]");
}

void write_trigger_port(port_writer& ports, const plain_port& port) {
    ports.begin("lv2:InputPort , lv2:ControlPort", port.symbol, port.name);
    ports.line("lv2:shortName", in_quotes(port.short_name));
    ports.line("rdfs:comment", in_quotes(port.comment));
    ports.line("lv2:default", decimal(port.low));
    write_range(ports, port.low, port.high);
    ports.line("lv2:portProperty", "lv2:toggled , pprops:trigger , lv2:connectionOptional");
}

void write_readout_port(port_writer& ports, const plain_port& port) {
    ports.begin("lv2:OutputPort , lv2:ControlPort", port.symbol, port.name);
    ports.line("lv2:shortName", in_quotes(port.short_name));
    ports.line("rdfs:comment", in_quotes(port.comment));
    write_range(ports, port.low, port.high);
    write_unit(ports, port.unit);
    ports.line("lv2:portProperty", "lv2:connectionOptional");
}

// Of the audio ports alone: a widely used framework takes every port in a group for an audio
// channel.
void write_groups(std::ostream& out) {
    const auto group = [&out](const char* which, const char* types, const char* name) {
        out << '\n'
            << uri(which) << "\n\ta " << types << " ;\n\tlv2:symbol \"" << which
            << "_group\" ;\n\tlv2:name " << in_quotes(name) << " .\n";
    };
    group("input", "pg:StereoGroup , pg:InputGroup", "Input");
    group("output", "pg:StereoGroup , pg:OutputGroup", "Output");
}

// Hosts show the presets of a bank under its label.
std::string bank_uri(const preset& p) {
    std::string name = "bank-" + p.category;
    std::replace(name.begin(), name.end(), ' ', '-');
    return uri(name);
}
std::string bank_of(const preset& p) {
    return p.category.empty() ? "" : " ;\n\tpset:bank " + bank_uri(p);
}

}  // namespace

void write_manifest(std::ostream& out, const std::string& binary, std::span<const preset> presets) {
    out << prefixes << '\n'
        << uri() << "\n\ta lv2:Plugin ;\n\tlv2:binary <" << binary
        << "> ;\n\trdfs:seeAlso <vesk.ttl> .\n";
    for (const preset& p : presets)
        out << '\n'
            << uri("preset-" + p.name) << "\n\ta pset:Preset ;\n\tlv2:appliesTo " << uri()
            << " ;\n\trdfs:label " << in_quotes(p.title) << bank_of(p)
            << " ;\n\trdfs:seeAlso <presets.ttl> .\n";
    std::vector<std::string> banks;
    for (const preset& p : presets) {
        if (p.category.empty() || std::find(banks.begin(), banks.end(), p.category) != banks.end())
            continue;
        banks.push_back(p.category);
        out << '\n'
            << bank_uri(p) << "\n\ta pset:Bank ;\n\trdfs:label " << in_quotes(p.category) << " .\n";
    }
}

void write_plugin(std::ostream& out, const version& of_project) {
    out << prefixes << '\n'
        << uri("project") << "\n\ta doap:Project ;\n\tdoap:name \"Vesk\" ;\n"
        << "\tdoap:maintainer [ foaf:name " << in_quotes(class_metadata::author) << " ] .\n";
    write_groups(out);
    // The extension has no file that says so.
    out << "\n<" << LV2_INLINEDISPLAY__interface << "> a lv2:ExtensionData .\n<"
        << LV2_INLINEDISPLAY__queue_draw << "> a lv2:Feature .\n";
    out << '\n'
        << uri() << "\n\ta lv2:Plugin , lv2:DelayPlugin ;\n\tdoap:name \"Vesk\" ;\n"
        << "\trdfs:comment " << in_quotes(class_metadata::description) << " ;\n"
        << "\tlv2:project " << uri("project") << " ;\n"
        << "\tlv2:minorVersion " << 2 * (100 * of_project.major + of_project.minor) << " ;\n"
        << "\tlv2:microVersion " << 2 * of_project.patch << " ;\n"
        << "\tlv2:optionalFeature lv2:hardRTCapable , urid:map ,\n\t\t<"
        << LV2_INLINEDISPLAY__queue_draw << "> ;\n"
        << "\tlv2:extensionData <" << LV2_INLINEDISPLAY__interface << "> ;\n"
        << "\tpg:mainInput " << uri("input") << " ;\n"
        << "\tpg:mainOutput " << uri("output") << " ;\n";
    port_writer ports(out);
    write_audio_ports(ports);
    write_event_port(ports);
    for (const control_port& port : control_ports()) write_control_port(ports, port);
    for (const plain_port& port : trigger_ports) write_trigger_port(ports, port);
    for (const plain_port& port : readout_ports) write_readout_port(ports, port);
    ports.end();
}

void write_presets(std::ostream& out, std::span<const preset> presets) {
    out << prefixes;
    for (const preset& p : presets) {
        out << '\n'
            << uri("preset-" + p.name) << "\n\ta pset:Preset ;\n\tlv2:appliesTo " << uri()
            << " ;\n\trdfs:label " << in_quotes(p.title) << bank_of(p) << " ;\n\trdfs:comment "
            << in_quotes(p.description) << " ;\n\tlv2:port ";
        const char* between = "";
        for (const control_port& port : control_ports()) {
            // Whether the effect is on at all and how the host runs are not for a preset to say.
            if (port.own == enabled || port.own == free_wheeling) continue;
            const double value = port.own == own_control_count
                                     ? p.values[port.attribute][port.element]
                                     : port.standard;
            out << between << "[ lv2:symbol " << in_quotes(port.symbol) << " ; pset:value "
                << decimal(value) << " ]";
            between = " ,\n\t\t";
        }
        out << " .\n";
    }
}

}  // namespace kv7::orv::lv2
