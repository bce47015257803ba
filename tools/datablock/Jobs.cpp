#include "Jobs.h"

#include "Terminal.h"

#include <travik/service/OrderedJobs.h>

#include <unistd.h>

#include <iostream>
#include <thread>

namespace Tool {

namespace {

thread_local std::ostream* currentOut = nullptr;
thread_local std::ostream* currentErr = nullptr;

/// What an image made a command write.
struct Written {
    std::string out;
    std::string err;
    int status = AllWell;
};

/// What the thread writes into, image after image: making a stream takes longer than checking a small image.
struct Recorder {
    CollectingStream out{STDOUT_FILENO};
    CollectingStream err{STDERR_FILENO};
};

/// As long as it lives the thread writes into its recorder.
class Recording {
public:
    Recording() {
        currentOut = &recorder_.out;
        currentErr = &recorder_.err;
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording() { currentOut = currentErr = nullptr; }

    Written written(int status) { return {recorder_.out.take(), recorder_.err.take(), status}; }

private:
    static thread_local Recorder recorder_;
};

thread_local Recorder Recording::recorder_;

struct OutputFailed {};

int useImage(const std::string& path, std::size_t place,
             const std::function<int(const Image&, std::size_t)>& function) {
    const std::optional<Image> image = readImage(path);
    return image ? function(*image, place) : CallFailed;
}

} // namespace

std::ostream& out() { return currentOut ? *currentOut : std::cout; }

std::ostream& err() { return currentErr ? *currentErr : std::cerr; }

void addJobsOption(CLI::App& command, unsigned int& jobs) {
    jobs = std::max(1U, std::thread::hardware_concurrency());
    command.add_option("--jobs", jobs, "How many images are worked on at once; as many as there are processors")
        ->check(CLI::Range(1U, 1024U))
        ->type_name("N");
}

int forEachImage(const std::vector<std::string>& paths, unsigned int jobs,
                 const std::function<int(const Image&, std::size_t)>& function, std::string_view separator) {
    // What one image makes may be long; nobody's turn has to be waited for.
    if (paths.size() == 1)
        return useImage(paths.front(), 0, function);
    int status = AllWell;
    bool isFirst = true;
    Progress progress(paths.size());
    const auto work = [&](std::size_t i) {
        Recording recording;
        const int result = useImage(paths[i], i, function);
        return recording.written(result);
    };
    const auto deliver = [&](std::size_t i, const Written& written) {
        status = std::max(status, written.status);
        if (!written.out.empty() || !written.err.empty())
            progress.hide();
        if (!written.out.empty())
            std::cout << (isFirst ? std::string_view() : separator) << written.out;
        isFirst = isFirst && written.out.empty();
        if (!written.err.empty())
            std::cerr << written.err;
        if (!std::cout)
            throw OutputFailed();
        progress.show(i + 1);
    };
    try {
        Travik::runOrdered(paths.size(), jobs, work, deliver);
    } catch (const OutputFailed&) {
        return CallFailed;
    }
    return status;
}

} // namespace Tool
