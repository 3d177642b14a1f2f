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

bool holds(const Tree& tree, const std::string& name, const std::string& text) {
    const auto found = tree.find(name);
    return found != tree.end() && found->second == text;
}

}  // namespace

LosslessTest::LosslessTest()
    : sandbox_(quick_directory()), names_{"a", "dir", "empty", "fifo", "link"} {
    flags_ = kFopLinksAsLinks | kFopDeleteAll;
}

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
    chmod(from("dir/locked").c_str(), 0555);
}

Request LosslessTest::request(int32_t kind) const {
    const bool is_delete = kind == kFopDelete;
    return {kind, sandbox_.file("from"), names_, is_delete ? "" : sandbox_.file("to"), flags_};
}

void LosslessTest::run(int32_t kind, std::vector<Fault> faults, const Labels& answers,
                       const Labels& unlike) {
    before_ = tree_of(sandbox_.file("from"));
    headless::reset();
    headless::on_alert([&](const headless::Alert& alert) {
        for (const std::string& label : answers)
            if (const int button = button_of(alert.buttons, label); button != 0)
                return headless::answer({button});
    });
    const int open_before = open_descriptors();
    {
        const Faults holding(std::move(faults));
        EXPECT_GE(run_operation(request(kind)), 0);
        calls_ = holding.calls("*");
    }
    asked_.clear();
    for (const headless::Alert& alert : headless::alerts())
        asked_.push_back(alert.message);
    EXPECT_EQ(open_descriptors(), open_before);
    check(kind, unlike);
}

void LosslessTest::check(int32_t kind, const Labels& unlike) const {
    const Tree source = tree_of(sandbox_.file("from"));
    const Tree target = tree_of(sandbox_.file("to"));
    const auto is_unlike = [&](const std::string& name) {
        return std::any_of(unlike.begin(), unlike.end(), [&](const std::string& one) {
            return name == one || name.rfind(one + "/", 0) == 0;
        });
    };
    for (const auto& [name, text] : before_) {
        if (is_unlike(name) || holds(source, name, text)) continue;
        const bool chosen =
            std::any_of(names_.begin(), names_.end(), [&name = name](const std::string& one) {
                return name == one || name.rfind(one + "/", 0) == 0;
            });
        const bool moved = kind == kFopMove && holds(target, name, text);
        EXPECT_TRUE(chosen && (moved || kind == kFopDelete)) << name << " is lost";
    }
    for (const auto& [name, text] : target) {
        EXPECT_TRUE(is_unlike(name) || holds(before_, name, text))
            << name << " is not whole: " << text.size() << " bytes";
        EXPECT_NE(text, "fsomebody's") << name << " is from elsewhere";
    }
    EXPECT_EQ(tree_of(sandbox_.file("else")), (Tree{{"kept", "fsomebody's"}}));
}

}  // namespace dorn
