// Everything that can be said against a list of files before the first one is touched.
#include "tarvex/files.h"

#include <algorithm>
#include <filesystem>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "tarvex/commands.h"
#include "tarvex/output.h"

#ifdef __linux__
#include <sched.h>
#endif

namespace tarvex::app {

namespace fs = std::filesystem;

const char* const MANY_FILES_HELP =
    "\nSeveral files go to a directory, DIR/ or one that is there, under their own names and the result's\n"
    "ending; those that fail are told and do not stop the others. The exit status then is 0 when all\n"
    "are done, 3 when one could not be read or written, else 1. A file whose name begins with - goes\n"
    "behind --.\n";

namespace {

constexpr std::size_t MOST_JOBS = MOST_WRITERS;

/// The processors that this process may run on.
unsigned ProcessorCount() {
#ifdef __linux__
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0 && CPU_COUNT(&allowed) > 0)
        return static_cast<unsigned>(CPU_COUNT(&allowed));
#endif
    return std::max(1U, std::thread::hardware_concurrency());
}

std::vector<std::string> WithoutRepeats(const std::vector<std::string>& paths) {
    std::vector<std::string> once;
    std::unordered_set<std::string> seen;
    for (const std::string& path : paths) {
        std::error_code ignored;
        const std::string whole =
            path == "-" ? path : fs::absolute(path, ignored).lexically_normal().string();
        if (seen.insert(whole).second) once.push_back(path);
    }
    return once;
}

/// Where an option's results go.
class Destination {
  public:
    Destination(const std::string& option, const std::string& path)
        : m_path(path), m_isDirectory(IsDirectoryName(path)), m_option(option) {}

    bool IsDirectory() const { return m_isDirectory; }
    const std::string& Path() const { return m_path; }

    void CheckInputs(const std::vector<std::string>& inputs) const {
        const bool isStream = std::find(inputs.begin(), inputs.end(), "-") != inputs.end();
        if (isStream && m_isDirectory)
            throw CLI::ValidationError(m_option,
                                       "standard input has no name; say the file's and not only the "
                                       "directory's");
        if (inputs.size() > 1 && !m_path.empty() && !m_isDirectory)
            throw CLI::ValidationError(m_option, std::to_string(inputs.size()) +
                                                     " inputs need a directory, and '" + m_path +
                                                     "' is none; to make one, end it with /");
    }

    std::string For(const std::string& input, const std::string& ending) const {
        if (!m_isDirectory) return m_path;
        return (fs::path(m_path) / (fs::path(input).stem().string() + ending)).string();
    }

  private:
    std::string m_path;
    bool m_isDirectory;
    std::string m_option;
};

/// Raises when two results were one file.
void CheckApart(const std::vector<FileTask>& tasks) {
    std::unordered_map<std::string, const FileTask*> owners;
    for (const FileTask& task : tasks) {
        for (const std::string* result : {&task.output, &task.extra}) {
            if (result->empty()) continue;
            const auto [found, isNew] = owners.emplace(fs::path(*result).lexically_normal().string(), &task);
            if (isNew) continue;
            const FileTask& other = *found->second;
            if (&other == &task)
                throw CLI::ValidationError(*result, "both results cannot go to the same place");
            throw CLI::ValidationError(other.input + " and " + task.input, "both would become " + *result);
        }
    }
}

/// Raises when a result is a link that leads to an input, which it would replace before its turn or after.
void CheckLinks(const std::vector<FileTask>& tasks) {
    std::unordered_set<std::string> inputs;
    std::error_code error;
    for (const FileTask& task : tasks) {
        for (const std::string* result : {&task.output, &task.extra}) {
            if (result->empty() || !fs::is_symlink(*result, error)) continue;
            for (std::size_t i = 0; inputs.empty() && i < tasks.size(); ++i)
                inputs.insert(fs::weakly_canonical(tasks[i].input, error).string());
            if (inputs.contains(fs::weakly_canonical(*result, error).string()))
                throw CLI::ValidationError(*result, "it is a link to one of the inputs");
        }
    }
}

}  // namespace

void AddInputs(CLI::App& command, FileArguments& files, const std::string& kinds, std::size_t least) {
    const auto take = [&files, least](const CLI::results_t& names) {
        if (names.size() < least) throw CLI::ValidationError("inputs", "there are not enough of them");
        files.inputs = names;
        return true;
    };
    // The parser takes a list for open when it wants more values, or allows extra ones; but those it would
    // take apart where a name stands in brackets. So it wants very many, and is content with fewer.
    constexpr int veryMany = CLI::detail::expected_max_vector_size;
    command.add_option(least == 1 ? "input" : "inputs", take, kinds + "; - is standard input")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->expected(veryMany - 1, veryMany)
        ->allow_extra_args(false)
        ->check(FileName())
        ->required()
        ->type_name(least == 1 ? "IN" : "DRAWING")
        ->option_text(least == 1 ? "IN... REQUIRED" : "A... B REQUIRED");
    const auto setJobs = [&files](const std::string& text) {
        files.jobs = static_cast<unsigned>(std::stoul(text));
    };
    command
        .add_option_function<std::string>(
            "-j,--jobs", setJobs,
            "How many files to work on at a time (default: as many as there are "
            "processors)")
        ->check(WholeNumber(1, MOST_JOBS))
        ->type_name("N");
    command.footer(MANY_FILES_HELP);
}

void AddOutput(CLI::App& command, FileArguments& files, const std::string& kinds) {
    command
        .add_option("-o,--output", files.output, kinds + " to write, or a directory; - is standard output")
        ->check(FileName())
        ->required()
        ->type_name("OUT");
}

void AddExtraJson(CLI::App& command, FileArguments& files, const std::string& option,
                  const std::string& description) {
    files.extraOption = option;
    command.add_option(option, files.extra, description + ", or a directory")
        ->check(FileName())
        ->type_name("FILE");
}

bool IsDirectoryName(const std::string& path) {
    std::error_code ignored;
    return path.ends_with('/') || (path != "-" && fs::is_directory(path, ignored));
}

FilePlan PlanFiles(const FileArguments& files, std::span<const FormatName> formats,
                   const std::optional<std::string>& word) {
    const std::vector<std::string> inputs = WithoutRepeats(files.inputs);
    if (inputs.size() > 1 && std::find(inputs.begin(), inputs.end(), "-") != inputs.end())
        throw CLI::ValidationError("input", "standard input goes alone");
    const Destination output("--output", files.output), extra(files.extraOption, files.extra);
    FilePlan plan;
    for (const Destination* place : {&output, &extra}) {
        place->CheckInputs(inputs);
        if (place->IsDirectory()) plan.directories.push_back(place->Path());
    }
    plan.format = formats.empty() ? 0 : FormatIndex(formats, word, files.output);
    const std::string ending = formats.empty() ? "" : formats[plan.format].ending;
    for (const std::string& input : inputs)
        plan.tasks.push_back(
            {input, output.For(input, ending), extra.For(input, ".json"), inputs.size() == 1});
    CheckApart(plan.tasks);
    if (inputs.size() > 1) CheckLinks(plan.tasks);
    plan.prints = files.output.empty();
    const std::size_t most = std::min<std::size_t>(plan.tasks.size(), MOST_JOBS);
    plan.jobs = static_cast<unsigned>(std::min<std::size_t>(files.jobs.value_or(ProcessorCount()), most));
    return plan;
}

}  // namespace tarvex::app
