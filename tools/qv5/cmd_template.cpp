// `qv5 template`: a cross-section template read from a JSON file - its chain, its shoulder,
// and the design height or side-slope catch point at an offset; optionally the blend of two
// templates.
#include "args.h"
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "template_file.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qv5::cli {
namespace {

struct TemplateOptions {
    std::string file;
    std::string offset;
    std::string ground;
    std::string blend;
    std::string ratio;
    bool json = false;
    bool raw = false;
};

/// The checked query.
struct Query {
    std::optional<double> offset;
    std::optional<double> ground;
    std::optional<double> ratio;
};

/// One element of the chain as shown.
struct ChainRow {
    geotemp_ElementType type;
    std::string feature; ///< UTF-8 name of a feature
    double start_h, start_v, end_h, end_v, angle;
};

std::vector<ChainRow> chain_of(const CGeoTemplate& t) {
    std::vector<ChainRow> rows;
    for (int i = 0; i < t.NumberElements(); ++i) {
        ChainRow row{t.NthElementType(i), "", 0, 0, 0, 0, GEO_NULL};
        double dh = 0.0;
        double dv = 0.0;
        t.GetNthElement(i, row.type, row.start_h, row.start_v, dh, dv, row.angle);
        row.end_h = row.start_h + dh;
        row.end_v = row.start_v + dv;
        CString name;
        if (t.GetFeatureAtIndex(i, name) != 0) {
            row.feature = name.ToUtf8();
        }
        rows.push_back(row);
    }
    return rows;
}

/// What the template gives at the queried offset.
struct Answer {
    bool on_slope = false;
    bool cut = false;
    int in_ditch = 0;
    double design = GEO_NULL;       ///< design height at the offset (surface or slope line)
    double angle = GEO_NULL;        ///< surface or slope angle
    double delta = GEO_NULL;        ///< ground above design
    double catch_offset = GEO_NULL; ///< where the slope meets the ground's height
};

bool evaluate(const CGeoTemplate& t, double offset, std::optional<double> ground, Answer& a,
              std::string& why) {
    if (t.OnSideSlope(offset) != 0) {
        a.on_slope = true;
        if (!ground) {
            why = fmt::format("offset {} lies on the side slope beyond the shoulder at {}: give "
                              "--ground-height for the catch point",
                              fixed(offset, 3), fixed(t.HOffsetShoulder(), 3));
            return false;
        }
        // Ground above the shoulder is cut, below it fill.
        a.cut = *ground > t.VOffsetShoulder();
        double point_angle = GEO_NULL;
        t.SlopeDeltas(offset, *ground, a.cut ? 1 : 0, a.in_ditch, a.delta, a.angle, point_angle,
                      a.catch_offset);
        if (a.in_ditch != 0) {
            a.design = t.VOffsetShoulder(); // the ditch is flat at shoulder height
            a.delta = *ground - a.design;
            a.angle = 0.0;
            return true;
        }
        a.design = *ground - a.delta;
        return true;
    }
    const double height = ground.value_or(0.0);
    double dv = GEO_NULL;
    t.TemplateDeltas(offset, height, dv, a.angle);
    if (dv == GEO_NULL) {
        why = fmt::format("no surface at offset {}: it faces a step or lies beyond the chain, "
                          "which ends at {}",
                          fixed(offset, 3), fixed(t.HOffsetShoulder(), 3));
        return false;
    }
    a.design = height - dv;
    if (ground) {
        a.delta = dv;
    }
    return true;
}

bool read_query(const TemplateOptions& o, Query& q) {
    std::vector<std::string> problems;
    auto number = [&](const char* name, const std::string& text) -> std::optional<double> {
        if (text.empty()) {
            return std::nullopt;
        }
        double value = 0.0;
        if (!parse_number(text, value)) {
            problems.push_back(not_a_number(name, text));
            return std::nullopt;
        }
        return value;
    };
    q.offset = number("offset", o.offset);
    q.ground = number("ground-height", o.ground);
    q.ratio = number("ratio", o.ratio);
    if (q.offset && *q.offset < 0.0) {
        problems.push_back("argument 'offset': '" + o.offset +
                           "' must not be negative (template offsets are measured outward)");
    }
    if (!o.ground.empty() && o.offset.empty()) {
        problems.push_back("argument 'ground-height' goes with --offset");
    }
    if (o.blend.empty() != o.ratio.empty()) {
        problems.push_back("give --blend OTHER.json and --ratio R together");
    }
    for (const std::string& p : problems) {
        report_error("template: " + p);
    }
    return problems.empty();
}

nlohmann::ordered_json chain_json(const std::vector<ChainRow>& rows) {
    nlohmann::ordered_json out = nlohmann::ordered_json::array();
    for (const ChainRow& r : rows) {
        nlohmann::ordered_json e = {{"type", template_type_name(r.type)},
                                    {"start_h", r.start_h},
                                    {"start_v", r.start_v},
                                    {"end_h", r.end_h},
                                    {"end_v", r.end_v},
                                    {"angle_rad", json_number(r.angle)}};
        if (r.type == geotemp_Feature) {
            e["name"] = r.feature;
        }
        out.push_back(e);
    }
    return out;
}

int run_template(const TemplateOptions& o) {
    Query q;
    if (!read_query(o, q)) {
        return kExitBadArguments;
    }
    CGeoTemplate first;
    if (!load_template_file("template", o.file, first)) {
        return kExitBadArguments;
    }
    CGeoTemplate evaluated = first;
    if (!o.blend.empty()) {
        CGeoTemplate other;
        if (!load_template_file("template", o.blend, other)) {
            return kExitBadArguments;
        }
        if (first.Similar(&other) == 0) {
            report_error("template: '" + o.file + "' and '" + o.blend +
                         "' cannot be blended: they differ in their element types or feature "
                         "names");
            return kExitBadArguments;
        }
        evaluated.SetName(CString::FromUtf8(
            fmt::format("{} / {} at {}", first.Name().ToUtf8(), other.Name().ToUtf8(), *q.ratio)));
        first.Interpolate(&other, *q.ratio, &evaluated);
    }
    const std::vector<ChainRow> rows = chain_of(evaluated);
    Answer a;
    if (q.offset) {
        std::string why;
        if (!evaluate(evaluated, *q.offset, q.ground, a, why)) {
            report_error("template: " + why);
            return kExitBadData;
        }
    }
    const DisplayUnits show(output_options());
    if (o.json) {
        nlohmann::ordered_json out = {
            {"name", evaluated.Name().ToUtf8()},
            {"elements", chain_json(rows)},
            {"shoulder", {{"h", evaluated.HOffsetShoulder()}, {"v", evaluated.VOffsetShoulder()}}}};
        if (q.ratio) {
            out["ratio"] = *q.ratio;
        }
        if (q.offset) {
            nlohmann::ordered_json at = {{"offset", *q.offset},
                                         {"on_side_slope", a.on_slope},
                                         {"design_height", json_number(a.design)},
                                         {"angle_rad", json_number(a.angle)}};
            if (q.ground) {
                at["ground_height"] = *q.ground;
                at["ground_above_design"] = json_number(a.delta);
            }
            if (a.on_slope) {
                at["slope"] = a.cut ? "cut" : "fill";
                at["in_ditch"] = a.in_ditch != 0;
                at["catch_offset"] = json_number(a.catch_offset);
            }
            out["at"] = at;
        }
        if (!show.raw()) {
            out["shoulder"]["formatted"] = {{"h", show.distance(evaluated.HOffsetShoulder(), 3)},
                                            {"v", show.height(evaluated.VOffsetShoulder(), 3)}};
            if (q.offset) {
                nlohmann::ordered_json formatted = {{"offset", show.distance(*q.offset, 3)},
                                                    {"design_height", show.height(a.design, 3)},
                                                    {"angle", show.grade(a.angle, 3)}};
                if (q.ground) {
                    formatted["ground_above_design"] = show.height(a.delta, 3);
                }
                if (a.on_slope && a.in_ditch == 0) {
                    formatted["catch_offset"] = show.distance(a.catch_offset, 3);
                }
                out["at"]["formatted"] = formatted;
            }
            out["units"] = show.description();
        }
        write_structured(out, format_name(output_options().format()));
        return 0;
    }
    std::cout << fmt::format("Template \"{}\", {} element(s)\n", evaluated.Name().ToUtf8(),
                             rows.size());
    std::cout << fmt::format("{:>3}  {:<12} {:>12} {:>12} {:>12} {:>12}  {}\n", "#", "Type",
                             "Start H", "Start V", "End H", "End V", "Slope");
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ChainRow& r = rows[i];
        std::string slope = r.angle == GEO_NULL ? "-" : show.grade(r.angle, 3);
        if (r.type == geotemp_Feature) {
            slope = "\"" + r.feature + "\"";
        }
        std::cout << fmt::format("{:>3}  {:<12} {:>12} {:>12} {:>12} {:>12}  {}\n", i + 1,
                                 template_type_name(r.type), show.distance(r.start_h, 3),
                                 show.height(r.start_v, 3), show.distance(r.end_h, 3),
                                 show.height(r.end_v, 3), slope);
    }
    std::cout << fmt::format("Shoulder   H {}  V {}\n",
                             show.distance(evaluated.HOffsetShoulder(), 3),
                             show.height(evaluated.VOffsetShoulder(), 3));
    if (q.offset) {
        std::cout << fmt::format("At offset {}:\n", show.distance(*q.offset, 3));
        if (a.on_slope && a.in_ditch != 0) {
            std::cout << fmt::format("  in the ditch (cut), design height {}\n",
                                     show.height(a.design, 3));
        } else if (a.on_slope) {
            std::cout << fmt::format("  on the {} slope, slope line at {} ({})\n",
                                     a.cut ? "cut" : "fill", show.height(a.design, 3),
                                     show.grade(a.angle, 3));
            std::cout << fmt::format("  catch point at offset {}\n",
                                     show.distance(a.catch_offset, 3));
        } else {
            std::cout << fmt::format("  design height {} (surface {})\n", show.height(a.design, 3),
                                     show.grade(a.angle, 3));
        }
        if (q.ground) {
            std::cout << fmt::format("  ground {} is {} {} design\n", show.height(*q.ground, 3),
                                     show.height(a.delta < 0.0 ? -a.delta : a.delta, 3),
                                     a.delta < 0.0 ? "below" : "above");
        }
    }
    std::cout << show.legend() << '\n';
    return 0;
}

} // namespace

CommandRunner add_template_options(CLI::App& command) {
    auto o = std::make_shared<TemplateOptions>();
    CLI::App* cmd = &command;
    cmd->add_option("file", o->file, "Template file (see docs/template-json.md)")->required();
    cmd->add_option("--offset", o->offset, "Offset outward from the centreline, metres");
    cmd->add_option("--ground-height", o->ground,
                    "With --offset: ground height relative to the centreline, metres");
    cmd->add_option("--blend", o->blend, "A second, similar template file to blend toward");
    cmd->add_option("--ratio", o->ratio,
                    "With --blend: 0 gives the first template, 1 the second (not clamped)");
    return [o] {
        o->json = output_options().format() != OutputFormat::table;
        o->raw = output_options().raw;
        return run_template(*o);
    };
}

} // namespace qv5::cli

QV5_COMMAND("template",
            "A cross-section template from a JSON file (metres, decimal degrees): its "
            "chain and shoulder, and the design height or side-slope catch point at an "
            "offset",
            qv5::cli::add_template_options);
