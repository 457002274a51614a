// `qv5 draw`: a cross-section template's picture, as the library draws it for a host's template
// editor, written to a PNG file and/or an SVG file.
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "road_text.h"
#include "template_file.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <charconv>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace qv5::cli {
namespace {

/// Largest side of a picture, pixels.
constexpr int kMaxPictureSide = 32767;
/// Most pixels of a picture (the drawing layer's limit).
constexpr long long kMaxPicturePixels = 1LL << 26;

struct DrawOptions {
    std::string file;
    std::string template_name; ///< with a road: the template of its library to draw
    std::string alignment;     ///< with a LandXML file of several alignments: which one
    std::string png;
    std::string svg;
    std::string size = "640x480";
    bool json = false;
};

/// Reads "WIDTHxHEIGHT" in pixels.
bool parse_size(const std::string& text, int& width, int& height) {
    const std::size_t x = text.find('x');
    if (x == std::string::npos) {
        return false;
    }
    const char* begin = text.data();
    const char* end = begin + text.size();
    auto w = std::from_chars(begin, begin + x, width);
    auto h = std::from_chars(begin + x + 1, end, height);
    return w.ec == std::errc() && w.ptr == begin + x && h.ec == std::errc() && h.ptr == end &&
           width > 0 && height > 0 && width <= kMaxPictureSide && height <= kMaxPictureSide &&
           static_cast<long long>(width) * height <= kMaxPicturePixels;
}

/// The template named in the library of a road (any form of road file). @return 0, or the exit
/// status with the problem reported: an unknown name lists the names the library holds
int read_road_template(const DrawOptions& o, CGeoTemplate& t) {
    CGeoRoad road;
    if (!load_road_or_report(o.file, road, o.alignment)) {
        return kExitBadData;
    }
    const int n = road.TemplateIndex(CString::FromUtf8(o.template_name));
    if (n < 0 || road.GetNthTemplate(n, &t) == 0) {
        std::string names;
        CGeoTemplate each;
        for (int i = 0; i < road.NumberTemplates(); ++i) {
            if (road.GetNthTemplate(i, &each) != 0) {
                names += (names.empty() ? "\"" : ", \"") + each.Name().ToUtf8() + "\"";
            }
        }
        report_error("draw: " + o.file + ": the road has no template named \"" + o.template_name +
                     "\"; its templates: " + (names.empty() ? std::string("none") : names));
        return kExitBadArguments;
    }
    return 0;
}

int run_draw(const DrawOptions& o) {
    int width = 0;
    int height = 0;
    if (!parse_size(o.size, width, height)) {
        report_error(fmt::format("draw: --size '{}' is not WIDTHxHEIGHT in pixels (each 1 to {}, "
                                 "at most {} pixels in all)",
                                 o.size, kMaxPictureSide, kMaxPicturePixels));
        return kExitBadArguments;
    }
    if (o.png.empty() && o.svg.empty()) {
        report_error("draw: give --png OUT.png, --svg OUT.svg or both");
        return kExitBadArguments;
    }
    CGeoTemplate t;
    if (o.template_name.empty()) {
        if (!load_template_file("draw", o.file, t)) {
            return kExitBadData;
        }
    } else if (const int status = read_road_template(o, t); status != 0) {
        return status;
    }

    CDC screen;
    CDC memory;
    memory.CreateCompatibleDC(&screen);
    memory.SetSvgRecording(o.svg.empty() ? 0 : 1);
    CRect rect(0, 0, width, height);
    t.DrawSection(rect, &screen, &memory);
    if (!o.png.empty() && !memory.SavePng(CString::FromUtf8(o.png))) {
        report_error("draw: cannot write '" + o.png + "'");
        return kExitBadData;
    }
    if (!o.svg.empty() && !memory.SaveSvg(CString::FromUtf8(o.svg))) {
        report_error("draw: cannot write '" + o.svg + "'");
        return kExitBadData;
    }
    if (o.json) {
        nlohmann::ordered_json out = {{"name", t.Name().ToUtf8()},
                                      {"elements", t.NumberElements()},
                                      {"width", width},
                                      {"height", height}};
        if (!o.png.empty()) {
            out["png"] = o.png;
        }
        if (!o.svg.empty()) {
            out["svg"] = o.svg;
        }
        write_structured(out, format_name(output_options().format()));
        return 0;
    }
    std::cout << fmt::format("Template \"{}\", {} element(s), drawn {}x{}", t.Name().ToUtf8(),
                             t.NumberElements(), width, height);
    if (!o.png.empty()) {
        std::cout << " to " << o.png;
    }
    if (!o.svg.empty()) {
        std::cout << (o.png.empty() ? " to " : " and ") << o.svg;
    }
    std::cout << '\n';
    return 0;
}

} // namespace

CommandRunner add_draw_options(CLI::App& command) {
    auto o = std::make_shared<DrawOptions>();
    CLI::App* cmd = &command;
    cmd->add_option("file", o->file,
                    "Template file (see docs/template-json.md), or with --template a road")
        ->required();
    cmd->add_option("--template", o->template_name,
                    "Draw the template of this name (letter case ignored) from the road's library");
    cmd->add_option("--alignment", o->alignment,
                    "With --template: the alignment of a LandXML file that holds several");
    cmd->add_option("--png", o->png, "Write the picture to this PNG file");
    cmd->add_option("--svg", o->svg, "Write the picture to this SVG file");
    cmd->add_option("--size", o->size, "Picture size WIDTHxHEIGHT in pixels (default 640x480)");
    return [o] {
        o->json = output_options().format() != OutputFormat::table;
        return run_draw(*o);
    };
}

} // namespace qv5::cli

QV5_COMMAND("draw",
            "Draw a cross-section template's picture (of a template file, or of a road's library) "
            "into a PNG and/or an SVG file",
            qv5::cli::add_draw_options);
