#include "tarvex/breakup_command.h"

#include <cstdio>
#include <map>

#include "tarvex/input.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/stitch_input.h"
#include "tarvex/stitch_writers.h"
#include "tarvex/svg_reader.h"

namespace tarvex::app {

namespace {

StitchDesign BreakUpAll(const FilledShapes& filled, const BreakUpOptions& options) {
    StitchDesign design{filled.corner, filled.width, filled.height, filled.millimetresPerUnit, {}};
    if (options.millimetreWidth) design.millimetresPerUnit = *options.millimetreWidth / filled.width;
    const InterruptsStopBreakUp interrupts(options.interrupts);
    Progress progress("breaking up");
    for (const FilledShape& shape : filled.shapes) {
        progress.Report(static_cast<double>(design.shapes.size()) /
                        static_cast<double>(filled.shapes.size()));
        design.shapes.push_back(
            {shape.colour, BreakUpShape(shape.contours, {options.checkComplexity, 0, 0})});
        const auto& islands = design.shapes.back().islands;
        if (!islands.empty() && islands.back().end == BreakUpEnd::Aborted) break;
    }
    return design;
}

}  // namespace

void ReportStitches(const std::string& input, const StitchDesign& design) {
    int islands = 0, done = 0;
    std::map<BreakUpEnd, int> failures;
    for (const StitchShape& shape : design.shapes) {
        for (const IslandBreakUp& island : shape.islands) {
            ++islands;
            if (island.end == BreakUpEnd::Done) {
                ++done;
            } else {
                ++failures[island.end];
            }
        }
    }
    if (failures.contains(BreakUpEnd::Aborted)) {
        throw ProgramError(ExitStatus::Interrupted, InputName(input), "interrupted; nothing was written");
    }
    std::string reasons;
    for (const auto& [end, count] : failures) {
        if (!reasons.empty()) reasons += "; ";
        if (islands > 1) reasons += std::to_string(count) + " of " + std::to_string(islands) + " parts: ";
        reasons += Explained(end);
    }
    if (done == 0) throw ProgramError(ExitStatus::NoResult, InputName(input), "not broken up: " + reasons);
    if (!reasons.empty()) ReportRemarks(input, "not broken up: " + reasons);
}

int RunBreakUp(const BreakUpOptions& options) {
    CheckOutput(options.output, options.input);
    if (!options.json.empty()) CheckOutput(options.json, options.input);
    const FilledShapes filled = ReadFilledShapes(options.input, options.maxPixels);
    if (filled.shapes.empty()) {
        const std::string why = filled.remarks.empty() ? "" : " (" + filled.remarks + ")";
        throw ProgramError(ExitStatus::NoResult, InputName(options.input), "there is no filled shape" + why);
    }
    const StitchDesign design = BreakUpAll(filled, options);
    ReportStitches(options.input, design);
    const std::string written = WriteStitches(design, options.format, options.mostSatin);
    WriteOutput(options.output, written);
    if (!options.json.empty()) WriteOutput(options.json, WriteStitchJson(design));
    ReportRemarks(options.input, filled.remarks);
    return 0;
}

}  // namespace tarvex::app
