#include "support/lossless_test.h"

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

namespace fs = std::filesystem;

// Of several blocks, none of them like another.
std::string big_content() {
    std::string text;
    for (int i = 0; text.size() < 100000; ++i)
        text += std::to_string(i) + "\n";
    return text;
}

// Hundreds of trees are made and removed, which a disk takes its time for.
std::string quick_directory() {
    const char* memory = "/dev/shm";
    return access(memory, W_OK) == 0 ? memory : fs::temp_directory_path().string();
}

// Whether it is one of the names or lies below one.
bool is_below(const std::string& name, const std::vector<std::string>& names) {
    return std::any_of(names.begin(), names.end(), [&](const std::string& one) {
        return name == one || name.rfind(one + "/", 0) == 0;
    });
}

}  // namespace

bool holds(const Tree& tree, const std::string& name, const std::string& what) {
    const auto found = tree.find(name);
    return found != tree.end() && found->second == what;
}

LosslessTest::LosslessTest() : sandbox_(quick_directory()) {}

void LosslessTest::make_trees() {
    for (const char* tree : {"from", "to", "else"}) {
        fs::remove_all(sandbox_.file(tree));
        sandbox_.mkdir(tree);
    }
    sandbox_.write("else/kept", "somebody's");
    sandbox_.write("from/a", "first");
    sandbox_.write("from/empty");
    sandbox_.write("from/unchosen", "stays");
    sandbox_.link("../else", "from/link");
    mkfifo(from("fifo").c_str(), 0600);
    sandbox_.mkdir("from/dir");
    sandbox_.mkdir("from/dir/sub");
    static const std::string big = big_content();
    sandbox_.write("from/dir/big", big);
    sandbox_.write("from/dir/sub/-\n'\xff", "hostile");
    sandbox_.link("nowhere", "from/dir/sub/dangling");
    sandbox_.link(".", "from/dir/sub/loop");
    link(from("a").c_str(), from("dir/sub/hard").c_str());
    sandbox_.mkdir("from/dir/locked");
    sandbox_.write("from/dir/locked/file", "behind a lock");
    // Whoever is not root could not move or remove what it holds.
    if (geteuid() == 0) chmod(from("dir/locked").c_str(), 0555);
}

Request LosslessTest::request(int32_t kind) const {
    return {kind, from(), names_, kind == kFopDelete ? "" : to(), kFopLinksAsLinks | kFopDeleteAll};
}

void LosslessTest::run(int32_t kind, std::vector<Fault> faults, const Labels& answers,
                       const Labels& unlike) {
    const Tree before = tree_of(from());
    gScreen = {};
    gScreen.on_alert = [&](const headless::Alert& alert) {
        const auto found = std::find_if(answers.begin(), answers.end(), [&](const auto& label) {
            return button_of(alert.buttons, label) != 0;
        });
        if (found != answers.end()) gScreen.answers = {button_of(alert.buttons, *found)};
    };
    const auto open_before = open_descriptors();
    {
        const Faults holding(std::move(faults));
        EXPECT_GE(run_operation(request(kind)), 0);
        calls_ = Faults::calls();
    }
    asked_.clear();
    for (const headless::Alert& alert : gScreen.alerts)
        asked_.push_back(alert.message);
    EXPECT_EQ(open_descriptors(), open_before);
    from_ = tree_of(from());
    to_ = tree_of(to());
    check(kind, before, unlike);
}

void LosslessTest::check(int32_t kind, const Tree& before, const Labels& unlike) const {
    for (const auto& [name, what] : before) {
        if (is_below(name, unlike) || holds(from_, name, what)) continue;
        const bool moved = kind == kFopMove && holds(to_, name, what);
        EXPECT_TRUE(is_below(name, names_) && (moved || kind == kFopDelete)) << name << " is lost";
    }
    for (const auto& [name, what] : to_) {
        EXPECT_TRUE(is_below(name, unlike) || holds(before, name, what))
            << name << " is not whole: " << what.size() << " bytes";
        EXPECT_NE(what, "=somebody's") << name << " is from elsewhere";
    }
    EXPECT_EQ(tree_of(sandbox_.file("else")), (Tree{{"kept", "=somebody's"}}));
}

}  // namespace dorn
