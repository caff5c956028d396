// Files are worked on by threads, which the library allows: different objects may be used at the same time.
// The main thread only waits, shows how far things are, and looks for interruptions, so that a signal can be
// answered with locks and not from within a handler.
//
// What is printed comes out in the order of the inputs. A thread that is done early leaves its text with the
// others until its turn comes; one that runs too far ahead waits, so that the texts held back stay few.
#include "tarvex/batch.h"

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#include "tarvex/input.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"

namespace tarvex::app {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t MOST_HELD_TEXTS = 256;

/// Prints texts in the order of their numbers, from whatever thread and in whatever order they come.
class TextsInOrder {
  public:
    /// Waits while text `number` is too far from its turn. Raises ProgramError where printing fails, at every
    /// call from then on.
    void Print(std::size_t number, std::string text) {
        std::unique_lock lock(m_mutex);
        m_moved.wait(lock, [&] { return number < m_next + MOST_HELD_TEXTS || m_failure; });
        if (!m_failure) PrintWhatIsDue(number, std::move(text));
        if (m_failure) throw ProgramError(*m_failure);
    }

  private:
    // The caller holds the mutex. A text that cannot be held would never get its turn, nor would those behind
    // it, so that is a failure as of printing.
    void PrintWhatIsDue(std::size_t number, std::string text) {
        try {
            m_held.emplace(number, std::move(text));
            for (; !m_held.empty() && m_held.begin()->first == m_next; ++m_next) {
                WriteOutput("-", m_held.begin()->second);
                m_held.erase(m_held.begin());
            }
        } catch (const ProgramError& error) {
            m_failure = error;
        } catch (const std::bad_alloc&) {
            m_failure = m_noMemory;
        }
        m_moved.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_moved;
    std::map<std::size_t, std::string> m_held;
    std::size_t m_next = 0;
    std::optional<ProgramError> m_failure;
    /// Made when there still is memory for it.
    const ProgramError m_noMemory{ExitStatus::File, OutputName("-"), "not enough memory"};
};

/// The work on several files.
class Batch {
  public:
    Batch(const FilePlan& plan, const OneFile& one) : m_plan(plan), m_one(one) {}
    /// When Run was left early, the threads end their files and take no more.
    ~Batch() { TakeNoMore(); }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    int Run(const std::string& what) {
        {
            // Before the threads, or one that shows how far its own file is would have the terminal's line.
            Progress progress(what);
            StartThreads();
            while (!WaitALittle()) {
                const Counts counts = Counted();
                progress.ReportFiles(counts.done, counts.failed, m_plan.tasks.size());
                if (m_interrupts.Signal() == 0) continue;
                Tell("interrupted: " + Summary());
                m_interrupts.EndProgram();
            }
        }
        Tell(Summary());
        return static_cast<int>(Counted().gravest);
    }

  private:
    struct Counts {
        std::size_t done = 0;
        std::size_t failed = 0;
        ExitStatus gravest = ExitStatus::Done;
    };

    void StartThreads() {
        m_threads.reserve(m_plan.jobs);
        while (m_threads.size() < m_plan.jobs) {
            try {
                m_threads.emplace_back([this] { Work(); });
            } catch (const std::system_error&) {  // fewer have to do, if there is one at all
                if (m_threads.empty()) throw std::bad_alloc();
                return;
            }
        }
    }

    void Work() {
        for (;;) {
            const std::size_t number = Next();
            if (number == m_plan.tasks.size()) break;
            Do(number);
        }
        const std::lock_guard lock(m_mutex);
        ++m_through;
        m_changed.notify_all();
    }

    std::size_t Next() {
        const std::lock_guard lock(m_mutex);
        return m_next < m_plan.tasks.size() ? m_next++ : m_next;
    }

    void TakeNoMore() {
        const std::lock_guard lock(m_mutex);
        m_next = m_plan.tasks.size();
    }

    void Do(std::size_t number) {
        const FileTask& task = m_plan.tasks[number];
        ExitStatus status = ExitStatus::Done;
        std::string text;
        try {
            text = m_one(task);
        } catch (const ProgramError& error) {
            status = error.Status();
            TellFailure(error.what());
        } catch (const std::bad_alloc&) {
            status = ExitStatus::File;
            TellFailure("not enough memory", &task);
        } catch (const std::exception& error) {
            status = ExitStatus::File;
            TellFailure(error.what(), &task);
        }
        if (m_plan.prints) Print(number, std::move(text), status);
        const std::lock_guard lock(m_mutex);
        ++(status == ExitStatus::Done ? m_counts.done : m_counts.failed);
        m_counts.gravest = std::max(m_counts.gravest, status);
    }

    /// Where there is no memory even for that, the last line still counts the file.
    static void TellFailure(const char* why, const FileTask* task = nullptr) {
        try {
            Tell(task == nullptr ? std::string(why) : InputName(task->input) + ": " + why);
        } catch (const std::bad_alloc&) {
            return;
        }
    }

    /// Nobody reads on: then there is nothing left to do.
    void Print(std::size_t number, std::string text, ExitStatus& status) {
        try {
            m_texts.Print(number, std::move(text));
        } catch (const ProgramError& error) {
            status = error.Status();
            TakeNoMore();
            if (!m_isBroken.exchange(true)) TellFailure(error.what());
        }
    }

    /// Whether all threads are through.
    bool WaitALittle() {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::milliseconds(50),
                                  [this] { return m_through == m_threads.size(); });
    }

    Counts Counted() {
        const std::lock_guard lock(m_mutex);
        return m_counts;
    }

    std::string Summary() {
        const Counts counts = Counted();
        std::string text =
            std::to_string(counts.done) + " of " + std::to_string(m_plan.tasks.size()) + " done";
        if (counts.failed > 0) text += ", " + std::to_string(counts.failed) + " failed";
        return text;
    }

    const FilePlan& m_plan;
    const OneFile& m_one;
    const HeldInterrupts m_interrupts;
    std::atomic<bool> m_isBroken = false;
    TextsInOrder m_texts;
    std::mutex m_mutex;  ///< of the four that follow
    std::condition_variable m_changed;
    std::size_t m_next = 0;
    std::size_t m_through = 0;  ///< threads that found nothing left to do
    Counts m_counts;
    std::vector<std::jthread> m_threads;  ///< last, so that they end before what they use
};

void MakeDirectory(const std::string& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) return;
    // Without the / at its end, behind which some systems look for a name.
    const std::string name = path.substr(0, path.find_last_not_of('/') + 1);
    fs::create_directory(name, error);
    if (error) throw ProgramError(ExitStatus::File, path, "cannot be made: " + error.message());
}

}  // namespace

int RunFiles(const std::string& what, const FilePlan& plan, const OneFile& one) {
    for (const std::string& directory : plan.directories) MakeDirectory(directory);
    if (plan.tasks.size() > 1) return Batch(plan, one).Run(what);
    const std::string text = one(plan.tasks.front());
    if (plan.prints) WriteOutput("-", text);
    return 0;
}

}  // namespace tarvex::app
