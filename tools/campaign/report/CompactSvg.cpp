#include "report/CompactSvg.h"

#include <array>
#include <pugixml.hpp>
#include <sstream>
#include <string_view>
#include <utility>

namespace report {

namespace {
/**
 * Attributes of nearly every group. They are set once on a group around all, which inherit them.
 */
constexpr std::array<std::pair<const char*, const char*>, 6> kUsual = {
    {{"fill", "none"},
     {"color", "black"},
     {"stroke", "currentColor"},
     {"stroke-width", "1.00"},
     {"stroke-linecap", "butt"},
     {"stroke-linejoin", "miter"}}};

void dropUsual(pugi::xml_node group)
{
    for (const auto& [name, value] : kUsual) {
        if (group.attribute(name).value() == std::string_view(value)) {
            group.remove_attribute(name);
        }
    }
}

/** White space counts in a text; in a group it has no meaning. */
bool isEmpty(pugi::xml_node node)
{
    const std::string_view name = node.name();
    const auto isElement = [](pugi::xml_node child) { return child.type() == pugi::node_element; };
    return (name == "g" && !node.find_child(isElement)) ||
           (name == "text" && node.first_child().empty());
}

/** Works from the inside out: a group with only empty parts is empty, too. */
void dropEmpty(pugi::xml_node node)
{
    for (pugi::xml_node child = node.first_child(); child;) {
        const pugi::xml_node next = child.next_sibling();
        dropEmpty(child);
        if (isEmpty(child)) {
            node.remove_child(child);
        }
        child = next;
    }
}
} // namespace

std::string compactSvg(const std::string& svg)
{
    pugi::xml_document document;
    constexpr unsigned kAsIs = pugi::parse_default | pugi::parse_ws_pcdata_single;
    if (!document.load_buffer(svg.data(), svg.size(), kAsIs, pugi::encoding_utf8)) {
        return svg;
    }
    pugi::xml_node canvas = document.child("svg").child("g");
    for (pugi::xml_node child : canvas.children()) {
        if (std::string_view(child.name()) == "g") {
            dropUsual(child);
        } else if (!child.attribute("stroke")) {
            child.append_attribute("stroke") = "none";
        }
    }
    for (const auto& [name, value] : kUsual) {
        canvas.append_attribute(name) = value;
    }
    dropEmpty(canvas);
    std::ostringstream text;
    document.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return text.str();
}

} // namespace report
