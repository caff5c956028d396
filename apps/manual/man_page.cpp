// tarvex(1) in man(7), which every man program reads. What the help keeps apart by indentation (tables,
// drawings, examples) stands as it is; everything else is filled.
#include <array>
#include <sstream>
#include <string_view>

#include "manual/writers.h"

namespace tarvex::manual {

namespace {

/// Text as man(7) takes it: what it would read as a command, a sign of another font, or another dash.
std::string Escaped(std::string_view text) {
    constexpr std::string_view special = "\\-'`^~";
    constexpr std::array<const char*, special.size()> written = {"\\e",   "\\-",   "\\(aq",
                                                                 "\\(ga", "\\(ha", "\\(ti"};
    std::string escaped = text.starts_with('.') ? "\\&" : "";
    for (const char c : text) {
        const std::size_t found = special.find(c);
        if (found == std::string_view::npos) {
            escaped += c;
        } else {
            escaped += written[found];
        }
    }
    return escaped;
}

/// The words of a paragraph in lines of moderate length, as the source of a man page has them; the last
/// line has no end.
std::string Filled(const std::string& text) {
    constexpr std::size_t most = 76;
    std::istringstream words(text);
    std::string lines;
    std::size_t length = 0;
    for (std::string word; words >> word;) {
        const std::string written = Escaped(word);
        const bool fits = length + 1 + written.size() <= most;
        if (length > 0) lines += fits ? ' ' : '\n';
        length = length > 0 && fits ? length + 1 + written.size() : written.size();
        lines += written;
    }
    return lines;
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

/// A value as the help writes it: words in bold, names of values in italics.
std::string Value(const Argument& argument) {
    std::string styled;
    std::istringstream parts(argument.value);
    for (std::string part; std::getline(parts, part, '|');) {
        if (!styled.empty()) styled += '|';
        styled += part.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string::npos ? Bold(part)
                                                                                             : Italic(part);
    }
    return styled + (argument.isRepeated ? " ..." : "");
}

std::string PlaceName(const Argument& place) {
    const bool isName = place.value.find_first_of("|abcdefghijklmnopqrstuvwxyz") == std::string::npos;
    return (isName ? place.value : place.names.front()) + (place.isRepeated ? " ..." : "");
}

/// What stands before a text: a heading begins a paragraph by itself.
enum class Before { heading, list };

/// Paragraphs are filled; blocks of lines that start with a space stand as they are.
void WriteText(std::ostream& out, const std::string& text, Before before) {
    std::istringstream lines(text);
    std::string paragraph;
    std::string block;
    const auto end = [&](std::string& part) {
        while (part.ends_with('\n')) part.pop_back();
        if (part.empty()) return;
        if (before == Before::list) out << ".PP\n";
        before = Before::list;
        out << (&part == &block ? ".EX\n" + part + "\n.EE\n" : Filled(part) + '\n');
        part.clear();
    };
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(' ')) {
            end(paragraph);
            block += Escaped(line) + '\n';
        } else if (line.empty()) {
            end(paragraph);
            if (!block.empty()) block += '\n';
        } else {
            end(block);
            paragraph += line + '\n';
        }
    }
    end(paragraph);
    end(block);
}

void WriteArgument(std::ostream& out, const Argument& argument) {
    out << ".TP\n";
    std::string names;
    for (const std::string& name : argument.names) names += (names.empty() ? "" : ", ") + Bold(name);
    out << names << (argument.value.empty() ? "" : ' ' + Value(argument)) << '\n';
    std::string text = argument.description;
    if (!argument.standard.empty()) text += " (default " + argument.standard + ')';
    out << Filled(text + (argument.isRequired ? ". Required." : ".")) << '\n';
}

void WriteCommand(std::ostream& out, const std::string& program, const Command& command) {
    out << ".SS " << Bold(program + ' ' + command.name);
    for (const Argument& place : command.places) out << ' ' << Italic(PlaceName(place));
    for (const Argument& option : command.options) {
        if (option.isRequired) out << ' ' << Bold(option.names.front()) << ' ' << Value(option);
    }
    out << " [\\fIoption\\fR ...]\n" << Filled(command.description) << ".\n";
    for (const Argument& place : command.places) {
        out << ".TP\n" << Italic(PlaceName(place)) << '\n';
        if (place.kind == ValueKind::words) {
            out << Value(place) << ":\n";
        }
        out << Filled(place.description) << ".\n";
    }
    for (const Argument& option : command.options) {
        if (option.names.back() != "--help") WriteArgument(out, option);
    }
    WriteText(out, command.footer, Before::list);
}

}  // namespace

std::string WriteManPage(const Program& program, const std::string& date) {
    std::ostringstream out;
    out << ".\\\" Made from the program's own definition of its arguments.\n";
    out << ".TH TARVEX 1 \"" << date << "\" \"" << program.name << ' ' << program.version
        << "\" \"User Commands\"\n";
    out << ".SH NAME\n" << program.name << " \\- trace pictures to outlines, combine and break up drawings\n";
    out << ".SH SYNOPSIS\n";
    out << ".B " << program.name << "\n\\fIcommand\\fR [\\fIargument\\fR ...]\n.br\n";
    out << ".B " << program.name << "\n\\fIcommand\\fR \\fB\\-\\-help\\fR\n";
    out << ".SH DESCRIPTION\n";
    WriteText(out, program.description, Before::heading);
    out << ".SH OPTIONS\n";
    for (const Argument& option : program.options) WriteArgument(out, option);
    out << ".SH COMMANDS\n";
    for (const Command& command : program.commands) WriteCommand(out, program.name, command);
    out << ".SH EXAMPLES\n";
    WriteText(out, program.footer.substr(program.footer.find('\n')),
              Before::heading);  // has a heading itself
    return out.str();
}

}  // namespace tarvex::manual
