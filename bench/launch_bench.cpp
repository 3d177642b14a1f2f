// How fast files open, measured in the real program; see bench/launch.
//
//     launch_bench DIRECTORY     shows the directory, whose first entry is a text file
#include "app/run.h"
#include "assoc/engine/association.h"
#include "dirmodel/dir_entry.h"
#include "filelist/navigation.h"
#include "measure.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fnmatch.h>
#include <iterator>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace dorn;
using namespace dorn::bench;

constexpr std::size_t kImage = std::size_t{2} << 30;
constexpr int kOpenings = 301;
constexpr int kNames = 100000;

/// Milliseconds of fl_open, which returns after the child's exec: a child that shares our memory
/// stops us until then.
std::vector<double> open_many() {
    std::vector<double> times;
    for (int i = 0; i < kOpenings; ++i)
        times.push_back(time_ms([] { fl_open(0); }));
    // Ignored children are waited for only so that the next measurement has the machine to itself.
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    return times;
}

/// The same by fork and exec, which copies the page tables.
std::vector<double> fork_many() {
    std::vector<double> times;
    for (int i = 0; i < 11; ++i) {
        times.push_back(time_ms([] {
            int ends[2];
            if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
            const pid_t child = fork();
            if (child == 0) {
                execlp("orterm", "orterm", nullptr);
                _exit(1);
            }
            close(ends[1]);
            char byte = 0;
            // The exec closes the child's end.
            if (read(ends[0], &byte, 1) != 0) std::abort();
            close(ends[0]);
        }));
    }
    while (waitpid(-1, nullptr, 0) > 0) {
    }
    return times;
}

void measure_opening() {
    if (gDir->count < 1 || _get_pat_idx(gDir->entries[0]->name) < 0) {
        std::fputs("launch_bench: no file with an association\n", stderr);
        std::exit(1);
    }
    print_figure("fl_open to the child's exec", median(open_many()) * 1000, "us", 5000);
    void* image = mmap(nullptr, kImage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (image == MAP_FAILED) {
        std::fputs("launch_bench: no memory for a large image\n", stderr);
        std::exit(1);
    }
    madvise(image, kImage, MADV_NOHUGEPAGE);
    std::memset(image, 1, kImage);
    const double own = median(open_many());
    std::printf("with %lld MB resident\n", static_cast<long long>(resident_bytes() >> 20));
    print_figure("  fl_open to the child's exec", own * 1000, "us", 5000);
    print_ratio("  the same", own, "fork and exec", median(fork_many()), 0);
    munmap(image, kImage);
}

std::vector<std::string> make_names() {
    constexpr const char* kEnds[] = {"txt", "c",  "JPG", "tar.gz", "html", "mp3",
                                     "o",   "py", "pdf", "wav",    "conf", "Makefile"};
    std::vector<std::string> names;
    for (int i = 0; i < kNames; ++i)
        names.push_back("some-name-" + std::to_string(i) + "." +
                        kEnds[static_cast<std::size_t>(i) % std::size(kEnds)]);
    return names;
}

struct Pattern {
    std::string text;
    int flags;
};

std::vector<Pattern> bare_patterns() {
    std::vector<Pattern> patterns;
    for (const Association& row : apat) {
        const bool any_case = row.pattern.starts_with('^');
        std::string_view rest(row.pattern);
        if (any_case) rest.remove_prefix(1);
        for (;;) {
            const std::size_t end = rest.find('|');
            patterns.push_back({std::string(rest.substr(0, end)), any_case ? FNM_CASEFOLD : 0});
            if (end == std::string_view::npos) break;
            rest.remove_prefix(end + 1);
        }
    }
    return patterns;
}

void measure_matching() {
    const std::vector<std::string> names = make_names();
    const std::vector<Pattern> patterns = bare_patterns();
    std::vector<double> own;
    std::vector<double> bare;
    int own_found = 0;
    int bare_found = 0;
    for (int round = 0; round < 5; ++round) {
        own_found = bare_found = 0;
        own.push_back(time_ms([&] {
            for (const std::string& name : names)
                own_found += _get_pat_idx(name.c_str()) >= 0 ? 1 : 0;
        }));
        bare.push_back(time_ms([&] {
            for (const std::string& name : names) {
                for (const Pattern& pattern : patterns) {
                    if (fnmatch(pattern.text.c_str(), name.c_str(), pattern.flags) != 0) continue;
                    ++bare_found;
                    break;
                }
            }
        }));
    }
    if (own_found != bare_found) {
        std::fprintf(stderr, "launch_bench: %d names match instead of %d\n", own_found, bare_found);
        std::exit(1);
    }
    print_ratio("100000 names, default associations", median(own), "bare fnmatch", median(bare), 2);
}

void measure_everything() {
    measure_matching();
    measure_opening();
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: launch_bench DIRECTORY\n", stderr);
        return 2;
    }
    return dorn_run(argc, argv, measure_everything);
}
