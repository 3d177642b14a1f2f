// The adaptor programs as dorn runs them, on a PATH of the test's own: which of the desktop's tools
// they run, and with exactly which arguments.
#include "support/child.h"
#include "support/sandbox.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace dorn {
namespace {

using Words = std::vector<std::string>;
using Calls = std::vector<Words>;
using Variables = std::map<std::string, std::string>;

// What the scripts themselves are made of.
constexpr const char* kSystemTools[] = {"awk", "date",   "dirname", "env", "od",
                                        "sed", "setsid", "sh",      "tr"};
class Adaptors : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* folder : {"bin", "system", "shown", "home", "data", "data/applications"})
            sandbox_.mkdir(folder);
        for (const std::string tool : kSystemTools) {
            const std::string path = "/usr/bin/" + tool;
            sandbox_.link(access(path.c_str(), X_OK) == 0 ? path : "/bin/" + tool,
                          "system/" + tool);
        }
        shown_ = sandbox_.file("shown");
        log_ = sandbox_.file("log");
    }

    // A tool that notes how it was called and then runs `code`.
    void tool(const std::string& name, const std::string& code = {}) const {
        sandbox_.script("bin/" + name,
                        "printf '%s\\0' \"$#\" \"${0##*/}\" \"$@\" >>'" + log_ + "'\n" + code);
    }
    void only_tools(const Words& names) const {
        std::filesystem::remove_all(sandbox_.file("bin"));
        sandbox_.mkdir("bin");
        for (const std::string& name : names)
            tool(name);
    }

    // Runs an adaptor in the shown directory; its exit status.
    int run(const std::string& adaptor, Words arguments, const Variables& more = {}) {
        unlink(log_.c_str());
        ChildSetting setting;
        setting.variables = more;
        setting.variables.merge(
            Variables{{"PATH", sandbox_.file("bin") + ":" + sandbox_.file("system")},
                      {"HOME", sandbox_.file("home")},
                      {"XDG_DATA_DIRS", sandbox_.file("data")},
                      {"DISPLAY", ":99"}});
        for (const char* unset : {"VISUAL", "EDITOR", "PAGER", "BROWSER", "WAYLAND_DISPLAY",
                                  "XDG_DATA_HOME", "XDG_CURRENT_DESKTOP"})
            setting.variables.emplace(unset, "");
        setting.directory = shown_;
        setting.output = sandbox_.file("output");
        setting.errors = sandbox_.file("errors");
        arguments.insert(arguments.begin(), std::string(DORN_ADAPTORS) + "/" + adaptor);
        const int status = end_of_child(start_child(arguments, setting));
        output_ = sandbox_.read("output");
        errors_ = sandbox_.read("errors");
        return status;
    }

    // The calls of tools since the last run began, without those that only ask something.
    Calls started() const {
        std::istringstream log(read_file(log_));
        Calls result;
        for (std::string word; std::getline(log, word, '\0');) {
            Words call(std::stoul(word) + 1);
            for (std::string& one : call)
                std::getline(log, one, '\0');
            if (call[0] != "xdg-mime" && !(call[0] == "gio" && call[1] == "mime"))
                result.push_back(call);
        }
        return result;
    }
    bool is_owned() const {
        return access((shown_ + "/owned").c_str(), F_OK) == 0;
    }

    Sandbox sandbox_;
    std::string shown_, log_, output_, errors_;
};

TEST_F(Adaptors, HelpAndWrongUsageRunNothing) {
    for (const std::string adaptor : {"ored", "orv", "orplay", "lanthorn", "dumpinfo", "zap"}) {
        EXPECT_EQ(run(adaptor, {"--help"}), 0) << adaptor;
        EXPECT_EQ(output_.rfind("usage: " + adaptor, 0), 0u) << adaptor << ": " << output_;
        EXPECT_EQ(errors_, "") << adaptor;
        for (const Words& wrong : {Words{}, Words{"-q", "x"}}) {
            EXPECT_EQ(run(adaptor, wrong), 2) << adaptor;
            EXPECT_NE(errors_.find("usage: " + adaptor), std::string::npos) << adaptor;
            EXPECT_EQ(output_, "") << adaptor;
        }
    }
}

TEST_F(Adaptors, ViewerAndPlayerAreTheDesktopsElseTheFirstThatComesUp) {
    sandbox_.write("shown/x.png");
    const std::string file = shown_ + "/x.png";
    struct Case {
        const char* adaptor;
        Variables tools;  // and what they do
        Calls started;
        int status;
    };
    const Words xdg = {"xdg-open", file}, gio = {"gio", "open", file}, exo = {"exo-open", file};
    const Case cases[] = {
        {"orv", {{"xdg-open", "echo chatter; echo more >&2"}, {"gio", ""}, {"eog", ""}}, {xdg}, 0},
        {"orv", {{"xdg-open", "exit 3"}, {"gio", "exit 2"}, {"exo-open", ""}}, {xdg, gio, exo}, 0},
        {"orv", {{"xdg-open", "exit 4"}, {"feh", ""}, {"mpv", ""}}, {xdg, {"feh", file}}, 0},
        {"orv", {{"mpv", ""}}, {}, 3},
        {"orplay", {{"xdg-open", "exit 3"}, {"mpv", ""}, {"vlc", ""}}, {xdg, {"vlc", file}}, 0},
        {"orplay", {{"eog", ""}}, {}, 3},
    };
    for (const Case& one : cases) {
        only_tools({});
        for (const auto& [name, code] : one.tools)
            tool(name, code);
        EXPECT_EQ(run(one.adaptor, {"x.png"}), one.status) << one.adaptor;
        EXPECT_EQ(started(), one.started) << one.adaptor;
        EXPECT_EQ(output_, "");
        const std::string told =
            std::string(one.adaptor) + ": there is no program to open " + file + " with\n";
        EXPECT_EQ(errors_, one.status == 3 ? told : "");
    }
}

TEST_F(Adaptors, NamesReachTheProgramAsTheyAre) {
    only_tools({"xdg-open", "vi", "less"});
    const std::string plain = shown_, odd = shown_ + "/a b\n'$(touch owned)";
    std::filesystem::create_directory(odd);
    for (const std::string& folder : {plain, odd}) {
        shown_ = folder;
        for (const std::string& name : hostile_names()) {
            const std::string file = shown_ + "/" + name, first = shown_ + "/plain.txt";
            close(creat(file.c_str(), 0600));
            const std::tuple<const char*, Words, Variables, Words> cases[] = {
                {"orv", {name}, {}, {"xdg-open", file}},
                {"orplay", {name}, {}, {"xdg-open", file}},
                {"ored", {name}, {}, {"vi", file}},
                {"ored",
                 {"-r", "plain.txt", name},
                 {{"PAGER", "less -S"}},
                 {"less", "-S", first, file}},
                {"ored",
                 {"plain.txt", name},
                 {{"VISUAL", "vi -c 'set tw=72'"}},
                 {"vi", "-c", "set tw=72", first, file}},
            };
            for (const auto& [adaptor, arguments, variables, call] : cases) {
                EXPECT_EQ(run(adaptor, arguments, variables), 0) << adaptor << " " << name;
                EXPECT_EQ(started(), Calls{call}) << name;
                EXPECT_EQ(errors_, "") << name;
            }
        }
        EXPECT_FALSE(is_owned());
    }
}

TEST_F(Adaptors, DirectoriesAndMissingFilesAreRefused) {
    only_tools({"xdg-open", "vi"});
    sandbox_.mkdir("shown/folder");
    sandbox_.link("folder", "shown/link");
    sandbox_.write("shown/good");
    for (const std::string name : {"folder", "link", "mis\x1bsing"}) {
        EXPECT_EQ(run("orv", {name, "good"}), 1) << name;
        EXPECT_EQ(started(), (Calls{{"xdg-open", shown_ + "/good"}})) << name;
        EXPECT_EQ(errors_.find('\x1b'), std::string::npos);
        EXPECT_NE(errors_, "");
    }
    EXPECT_EQ(run("ored", {"good", "link"}), 1);
    EXPECT_EQ(run("lanthorn", {"-u", "file://" + shown_ + "/folder"}), 1);
    EXPECT_EQ(run("dumpinfo", {"folder"}), 1);
    EXPECT_TRUE(started().empty());
    EXPECT_EQ(run("ored", {"to-be-made"}), 0);
    EXPECT_EQ(started(), (Calls{{"vi", shown_ + "/to-be-made"}}));
}

TEST_F(Adaptors, TheEditorIsTheDesktopsForPlainText) {
    const std::string a = shown_ + "/a b", c = shown_ + "/c";
    const std::pair<std::string, Calls> cases[] = {
        {"Exec=gedit", {{"gedit", a, c}}},
        {"Exec=gedit --title=%c -i %i %F --last", {{"gedit", "--title=", "-i", a, c, "--last"}}},
        {"Exec = env \"A=it's\" 'b c' gedit 100%% \"\" --file=%f",
         {{"gedit", "100%", "", "--file=" + a}, {"gedit", "100%", "", "--file=" + c}}},
        {"Exec=gedit \"a \\\\$b \\\\\\\\ \\\\\"\" x\\sy %F\r",
         {{"gedit", "a $b \\ \"", "x", "y", a, c}}},
        {"Exec=gedit $(touch owned) `touch owned`; 'touch owned' & %F",
         {{"gedit", "$(touch", "owned)", "`touch", "owned`;", "touch owned", "&", a, c}}},
        {"Exec=micro %f\nTerminal=true", {{"micro", a}, {"micro", c}}},
        {"Exec=missing %F", {{"vi", a, c}}},
        {"Exec=failing %F", {{"failing", a, c}, {"vi", a, c}}},
        {"Comment=no command", {{"vi", a, c}}},
    };
    only_tools({"gedit", "micro", "vi"});
    tool("xdg-mime", "echo vendor-editor.desktop");
    tool("failing", "exit 1");
    tool("b c", "\"$@\"");
    sandbox_.mkdir("data/applications/vendor");
    for (const auto& [entry, expected] : cases) {
        for (const std::string place : {"vendor-editor.desktop", "vendor/editor.desktop"}) {
            const std::string path = "data/applications/" + place;
            sandbox_.write(path, "[Other]\nExec=wrong\n[Desktop Entry]\n" + entry +
                                     "\n[Desktop Action x]\nExec=wrong\nTerminal=true\n");
            EXPECT_EQ(run("ored", {"a b", "c"}), 0) << entry;
            unlink(sandbox_.file(path).c_str());
            Calls found = started();
            std::erase_if(found, [](const Words& call) { return call[0] == "b c"; });
            if (found.size() > 1 && found[0][0] == "gedit") std::sort(found.begin(), found.end());
            EXPECT_EQ(found, expected) << entry;
            EXPECT_FALSE(is_owned()) << entry;
        }
    }
}

TEST_F(Adaptors, EditorPagerAndBrowserAreTheUsersElseTheFirstThatIsThere) {
    const std::string file = shown_ + "/x", url = "http://host/a?b='c d'&e";
    sandbox_.write("data/applications/gedit.desktop", "[Desktop Entry]\nExec=gedit %F\n");
    struct Case {
        Words tools;
        Variables variables;
        Words arguments;
        Words started;
    };
    const Words edit = {"ored", "x"}, read = {"ored", "-r", "x"}, browse = {"lanthorn", "-u", url};
    const Case cases[] = {
        {{"xdg-mime", "gedit", "vi"}, {{"DISPLAY", ""}}, edit, {"vi", file}},
        {{"gio", "gedit", "vi"}, {}, edit, {"gedit", file}},
        {{"gio", "gedit", "vi"},
         {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", "w"}},
         edit,
         {"gedit", file}},
        {{"one", "two", "vi"}, {{"VISUAL", "one"}, {"EDITOR", "two"}}, edit, {"one", file}},
        {{"two", "vi"}, {{"VISUAL", "one"}, {"EDITOR", "two -w"}}, edit, {"two", "-w", file}},
        {{"sensible-editor", "editor", "vi"}, {}, edit, {"sensible-editor", file}},
        {{"less"}, {}, edit, {}},
        {{"xdg-mime", "gedit", "one"}, {{"PAGER", "one"}}, read, {"one", file}},
        {{"less", "more"}, {{"PAGER", "one"}}, read, {"less", file}},
        {{"vi"}, {}, read, {}},
        {{"two", "xdg-open"},
         {{"BROWSER", "one:two -n %s --x"}},
         browse,
         {"two", "-n", url, "--x"}},
        {{"two"}, {{"BROWSER", "one::two --app=%s"}}, browse, {"two", "--app=" + url}},
        {{"lynx", "xdg-open"}, {{"BROWSER", "lynx -x"}}, browse, {"lynx", "-x", url}},
        {{"xdg-open", "sensible-browser"}, {{"BROWSER", "one"}}, browse, {"xdg-open", url}},
        {{"gio"}, {}, browse, {"gio", "open", url}},
        {{"eog"}, {}, browse, {}},
    };
    for (const Case& one : cases) {
        only_tools(one.tools);
        for (const std::string& name : one.tools) {
            if (name == "xdg-mime") tool(name, "echo gedit.desktop");
            if (name == "gio")
                tool(name,
                     "[ $1 != mime ] || echo \"Default application for 'text/plain': "
                     "gedit.desktop\"");
        }
        const std::string input =
            ::testing::PrintToString(one.tools) + ::testing::PrintToString(one.variables);
        const bool none = one.started.empty();
        EXPECT_EQ(run(one.arguments[0], Words(one.arguments.begin() + 1, one.arguments.end()),
                      one.variables),
                  none ? 3 : 0)
            << input;
        EXPECT_EQ(started(), none ? Calls{} : Calls{one.started}) << input;
        EXPECT_EQ(errors_.rfind(one.arguments[0] + ": there is no ", 0) == 0, none) << errors_;
    }
    only_tools({});
    tool("vi", "exit 7");
    EXPECT_EQ(run("ored", {"x"}), 7);
}

TEST_F(Adaptors, BarePathsBecomeUrlsAndUrlsStay) {
    tool("xdg-open");
    sandbox_.write("shown/a#b %41?.html");
    sandbox_.write("shown/bad\xff\n.html");
    sandbox_.mkdir("shown/two  blanks");
    sandbox_.write("shown/two  blanks/it is -x.html");
    const std::string base = "file://" + shown_;
    // What dorn's shell makes of "lanthorn -u file://$PWD/'name' ".
    const Words split = {"-u", base + "/two", "blanks/it is -x.html"};
    const std::pair<Words, std::string> cases[] = {
        {{"-u", base + "/a#b %41?.html"}, base + "/a%23b%20%2541%3F.html"},
        {{"-u", base + "/bad\xff\n.html"}, base + "/bad%FF%0A.html"},
        {{"-u", base + "/missing%20x.html#here"}, base + "/missing%20x.html#here"},
        {{"-u", "mailto:x"}, "mailto:x"},
    };
    for (const auto& [arguments, url] : cases) {
        EXPECT_EQ(run("lanthorn", arguments), 0) << url;
        EXPECT_EQ(started(), (Calls{{"xdg-open", url}}));
    }
    shown_ += "/two  blanks";
    EXPECT_EQ(run("lanthorn", split), 0) << errors_;
    EXPECT_EQ(started(), (Calls{{"xdg-open", base + "/two%20%20blanks/it%20is%20-x.html"}}));
}

TEST_F(Adaptors, CoreFilesAreDescribedByWhatIsInstalled) {
    sandbox_.write("shown/x.core", "x");
    sandbox_.write("shown/core.cat.0.aa.4711.99.zst", "x");
    sandbox_.write("shown/program");
    const std::string core = shown_ + "/x.core", kept = shown_ + "/core.cat.0.aa.4711.99.zst";
    const std::string says = "echo \"ELF core file, execfn: '" + shown_ + "/program', x\"";
    EXPECT_EQ(run("dumpinfo", {"x.core"}), 3);
    tool("file", "echo 'ASCII text'");
    tool("gdb", "echo 'backtrace'");
    EXPECT_EQ(run("dumpinfo", {"x.core"}), 0);
    EXPECT_EQ(output_, core + ": ASCII text\n");
    EXPECT_EQ(started(), (Calls{{"file", "-L", "-b", "--", core}}));
    tool("file", says);
    EXPECT_EQ(run("dumpinfo", {"x.core"}), 0);
    ASSERT_EQ(started().size(), 2u);
    const Words gdb = started()[1];
    EXPECT_EQ(gdb.back(), "--core=" + core);
    EXPECT_EQ(gdb[gdb.size() - 2], "--se=" + shown_ + "/program");
    EXPECT_NE(output_.find("\nbacktrace\n"), std::string::npos) << output_;
    tool("coredumpctl");
    EXPECT_EQ(run("dumpinfo", {kept}), 0);
    ASSERT_EQ(started().size(), 2u);
    EXPECT_EQ(started()[1], (Words{"coredumpctl", "--no-pager", "info", "4711"}));
}

}  // namespace
}  // namespace dorn
