// The adaptor programs as dorn runs them, on a PATH of the test's own: which of the desktop's tools
// they run, and with exactly which arguments.
#include "support/sandbox.h"

#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace dorn {
namespace {

using Words = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

// What the scripts themselves are made of.
constexpr const char* kSystemTools[] = {"awk", "date",   "dirname", "env", "od",
                                        "sed", "setsid", "sh",      "tr"};
// Names that a careless script takes for something else.
const std::string kHostileNames[] = {
    "plain.txt",
    "a  b\t.txt",
    "-r",
    "-rf",
    "--help",
    "new\nline",
    "end\n",
    "it's \"$(touch owned)\"",
    "`touch owned`",
    "*; touch owned &",
    "bad\xff\x81utf",
    "100%s%n.html",
    "back\\nslash\\",
    std::string(255, 'x'),
    "~",
    "\xe2\x80\xaeright",
};

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

class Adaptors : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* folder : {"bin", "system", "shown", "home", "data", "data/applications"})
            sandbox_.mkdir(folder);
        for (const char* tool : kSystemTools) {
            for (const std::string folder : {"/usr/bin/", "/bin/"}) {
                if (access((folder + tool).c_str(), X_OK) != 0) continue;
                sandbox_.link(folder + tool, std::string("system/") + tool);
                break;
            }
        }
        shown_ = sandbox_.file("shown");
        environment_ = {{"PATH", sandbox_.file("bin") + ":" + sandbox_.file("system")},
                        {"HOME", sandbox_.file("home")},
                        {"XDG_DATA_DIRS", sandbox_.file("data")},
                        {"DISPLAY", ":99"},
                        {"LOG", sandbox_.file("log")}};
    }

    // A tool that notes how it was called and then runs `code`.
    void tool(const std::string& name, const std::string& code = {}) const {
        sandbox_.write("bin/" + name,
                       "#!/bin/sh\nprintf '%s\\0' \"$#\" \"${0##*/}\" \"$@\" "
                       ">>\"$LOG\"\n" +
                           code + "\n");
        ASSERT_EQ(chmod(sandbox_.file("bin/" + name).c_str(), 0755), 0);
    }
    void no_tools() const {
        for (const auto& entry : std::filesystem::directory_iterator(sandbox_.file("bin")))
            std::filesystem::remove(entry.path());
    }

    // Runs an adaptor in the shown directory; its exit status.
    int run(const std::string& adaptor, const Words& arguments, const Variables& more = {}) {
        unlink(sandbox_.file("log").c_str());
        const pid_t child = fork();
        if (child == 0) run_in_child(adaptor, arguments, more);
        int status = 0;
        waitpid(child, &status, 0);
        output_ = read_file(sandbox_.file("output"));
        errors_ = read_file(sandbox_.file("errors"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + status;
    }

    // The calls of tools since the last run began.
    std::vector<Words> calls() const {
        std::istringstream log(read_file(sandbox_.file("log")));
        std::vector<Words> result;
        for (std::string word; std::getline(log, word, '\0');) {
            Words call(std::stoul(word) + 1);
            for (std::string& one : call)
                std::getline(log, one, '\0');
            result.push_back(call);
        }
        return result;
    }
    // The calls without those that only ask something.
    std::vector<Words> started() const {
        std::vector<Words> result;
        for (const Words& call : calls()) {
            if (call[0] != "xdg-mime" && !(call[0] == "gio" && call[1] == "mime"))
                result.push_back(call);
        }
        return result;
    }
    bool is_owned() const {
        return access((shown_ + "/owned").c_str(), F_OK) == 0;
    }

    Sandbox sandbox_;
    std::string shown_, output_, errors_;
    Variables environment_;

  private:
    [[noreturn]] void run_in_child(const std::string& adaptor, const Words& arguments,
                                   const Variables& more) {
        Variables variables = environment_;
        for (const auto& [name, value] : more)
            variables[name] = value;
        Words settings;
        for (const auto& [name, value] : variables)
            settings.push_back(name + "=" + value);
        const std::string program = std::string(DORN_ADAPTORS) + "/" + adaptor;
        Words words = {program};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv, envp;
        for (std::string& word : words)
            argv.push_back(word.data());
        for (std::string& setting : settings)
            envp.push_back(setting.data());
        argv.push_back(nullptr);
        envp.push_back(nullptr);
        const std::string files[] = {"/dev/null", sandbox_.file("output"), sandbox_.file("errors")};
        for (int i = 0; i < 3; ++i) {
            const int flags = i == 0 ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC;
            const int descriptor = open(files[i].c_str(), flags, 0600);
            dup2(descriptor, i);
            close(descriptor);
        }
        if (chdir(shown_.c_str()) == 0) execve(program.c_str(), argv.data(), envp.data());
        _exit(99);
    }
};

TEST_F(Adaptors, HelpAndWrongUsageRunNothing) {
    for (const std::string adaptor : {"ored", "orv", "orplay", "lanthorn", "dumpinfo", "zap"}) {
        EXPECT_EQ(run(adaptor, {"--help"}), 0) << adaptor;
        EXPECT_EQ(output_.rfind("usage: " + adaptor, 0), 0u) << adaptor << ": " << output_;
        EXPECT_EQ(errors_, "") << adaptor;
        for (const Words& wrong : {Words{}, Words{"-q"}, Words{"-q", "x"}}) {
            EXPECT_EQ(run(adaptor, wrong), 2) << adaptor;
            EXPECT_NE(errors_.find("usage: " + adaptor), std::string::npos) << adaptor;
            EXPECT_EQ(output_, "") << adaptor;
        }
    }
    EXPECT_TRUE(calls().empty());
}

TEST_F(Adaptors, ViewerAndPlayerAreTheDesktopsElseTheFirstThatComesUp) {
    sandbox_.write("shown/x.png");
    const std::string file = shown_ + "/x.png";
    struct Case {
        const char* adaptor;
        std::vector<std::pair<std::string, std::string>> tools;
        std::vector<Words> started;
        int status;
    };
    const Words xdg = {"xdg-open", file}, gio = {"gio", "open", file}, exo = {"exo-open", file};
    const Case cases[] = {
        {"orv", {{"xdg-open", ""}, {"gio", ""}, {"eog", ""}}, {xdg}, 0},
        {"orv", {{"xdg-open", "exit 3"}, {"gio", ""}, {"eog", ""}}, {xdg, gio}, 0},
        {"orv", {{"gio", "exit 2"}, {"exo-open", ""}}, {gio, exo}, 0},
        {"orv", {{"xdg-open", "exit 4"}, {"feh", ""}, {"mpv", ""}}, {xdg, {"feh", file}}, 0},
        {"orv", {{"xdg-open", "echo chatter; echo chatter >&2"}}, {xdg}, 0},
        {"orv", {{"mpv", ""}}, {}, 3},
        {"orplay", {{"xdg-open", ""}}, {xdg}, 0},
        {"orplay", {{"xdg-open", "exit 3"}, {"mpv", ""}, {"vlc", ""}}, {xdg, {"vlc", file}}, 0},
        {"orplay", {{"eog", ""}}, {}, 3},
    };
    for (const Case& one : cases) {
        no_tools();
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
    tool("xdg-open");
    tool("vi");
    tool("less");
    sandbox_.mkdir("shown/a b\n'$(touch owned)");
    const std::string plain = shown_;
    for (const std::string& folder : {plain, plain + "/a b\n'$(touch owned)"}) {
        shown_ = folder;
        for (const std::string& name : kHostileNames) {
            std::ofstream(shown_ + "/" + name) << "x";
            const std::string file = shown_ + "/" + name;
            for (const char* adaptor : {"orv", "orplay"}) {
                EXPECT_EQ(run(adaptor, {name}), 0) << adaptor << " " << name;
                EXPECT_EQ(started(), (std::vector<Words>{{"xdg-open", file}})) << name;
            }
            EXPECT_EQ(run("ored", {name}), 0) << name;
            EXPECT_EQ(started(), (std::vector<Words>{{"vi", file}})) << name;
            EXPECT_EQ(run("ored", {"-r", "plain.txt", name}, {{"PAGER", "less -S"}}), 0) << name;
            EXPECT_EQ(started(), (std::vector<Words>{{"less", "-S", shown_ + "/plain.txt", file}}))
                << name;
            EXPECT_EQ(run("ored", {"plain.txt", name}, {{"VISUAL", "vi -c 'set tw=72'"}}), 0);
            EXPECT_EQ(started(),
                      (std::vector<Words>{{"vi", "-c", "set tw=72", shown_ + "/plain.txt", file}}))
                << name;
            EXPECT_EQ(errors_, "") << name;
        }
        EXPECT_FALSE(is_owned());
    }
}

TEST_F(Adaptors, DirectoriesAndMissingFilesAreRefused) {
    tool("xdg-open");
    tool("vi");
    sandbox_.mkdir("shown/folder");
    sandbox_.link("folder", "shown/link");
    sandbox_.write("shown/good");
    for (const std::string name : {"folder", "link", "mis\x1bsing"}) {
        EXPECT_EQ(run("orv", {name, "good"}), 1) << name;
        EXPECT_EQ(started(), (std::vector<Words>{{"xdg-open", shown_ + "/good"}})) << name;
        EXPECT_EQ(errors_.find('\x1b'), std::string::npos);
        EXPECT_NE(errors_, "");
    }
    EXPECT_EQ(run("ored", {"good", "link"}), 1);
    EXPECT_EQ(run("lanthorn", {"-u", "file://" + shown_ + "/folder"}), 1);
    EXPECT_EQ(run("dumpinfo", {"folder"}), 1);
    EXPECT_TRUE(started().empty());
    EXPECT_EQ(run("ored", {"to-be-made"}), 0);
    EXPECT_EQ(started(), (std::vector<Words>{{"vi", shown_ + "/to-be-made"}}));
}

TEST_F(Adaptors, TheEditorIsTheDesktopsForPlainText) {
    const std::string a = shown_ + "/a b", c = shown_ + "/c";
    struct Case {
        std::string entry;
        std::vector<Words> started;
    };
    const Case cases[] = {
        {"Exec=gedit %U", {{"gedit", a, c}}},
        {"Exec=gedit", {{"gedit", a, c}}},
        {"Exec=gedit --title=%c -i %i %F --last", {{"gedit", "--title=", "-i", a, c, "--last"}}},
        {"Exec = env \"A=it's\" 'b c' gedit 100%% \"\" --file=%f",
         {{"gedit", "100%", "", "--file=" + a}, {"gedit", "100%", "", "--file=" + c}}},
        {"Exec=gedit \"a \\\\$b \\\\\\\\ \\\\\"\" x\\sy %F\r",
         {{"gedit", "a $b \\ \"", "x", "y", a, c}}},
        {"Exec=gedit $(touch owned) `touch owned`; 'touch owned' & %F",
         {{"gedit", "$(touch", "owned)", "`touch", "owned`;", "touch owned", "&", a, c}}},
        {"Exec=micro -x %F\nTerminal=true", {{"micro", "-x", a, c}}},
        {"Exec=micro %f\nTerminal=true", {{"micro", a}, {"micro", c}}},
        {"Exec=missing %F", {{"vi", a, c}}},
        {"Exec=failing %F", {{"failing", a, c}, {"vi", a, c}}},
        {"Comment=no command", {{"vi", a, c}}},
    };
    tool("xdg-mime", "echo vendor-editor.desktop");
    tool("gedit");
    tool("micro");
    tool("failing", "exit 1");
    tool("vi");
    tool("b c", "\"$@\"");
    for (const Case& one : cases) {
        for (const std::string place : {"vendor-editor.desktop", "vendor/editor.desktop"}) {
            std::filesystem::remove_all(sandbox_.file("data/applications"));
            sandbox_.mkdir("data/applications");
            sandbox_.mkdir("data/applications/vendor");
            sandbox_.write("data/applications/" + place,
                           "[Other]\nExec=wrong\n[Desktop Entry]\n" + one.entry +
                               "\n[Desktop Action x]\nExec=wrong\nTerminal=true\n");
            EXPECT_EQ(run("ored", {"a b", "c"}), 0) << one.entry;
            std::vector<Words> found = started();
            std::erase_if(found, [](const Words& call) { return call[0] == "b c"; });
            if (found.size() > 1 && found[0][0] == "gedit") std::sort(found.begin(), found.end());
            EXPECT_EQ(found, one.started) << one.entry;
            EXPECT_FALSE(is_owned()) << one.entry;
        }
    }
}

TEST_F(Adaptors, WithoutADesktopsEditorOneOfTheTerminalIsRun) {
    const std::string file = shown_ + "/x";
    sandbox_.write("data/applications/gedit.desktop", "[Desktop Entry]\nExec=gedit %F\n");
    struct Case {
        Words tools;
        Variables variables;
        Words arguments;
        Words started;
        int status;
    };
    const Case cases[] = {
        {{"xdg-mime", "gedit", "vi"}, {{"DISPLAY", ""}}, {"x"}, {"vi", file}, 0},
        {{"gio", "gedit", "vi"}, {}, {"x"}, {"gedit", file}, 0},
        {{"gio", "gedit", "vi"},
         {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", "w"}},
         {"x"},
         {"gedit", file},
         0},
        {{"one", "two", "vi"}, {{"VISUAL", "one"}, {"EDITOR", "two"}}, {"x"}, {"one", file}, 0},
        {{"two", "vi"}, {{"VISUAL", "one"}, {"EDITOR", "two -w"}}, {"x"}, {"two", "-w", file}, 0},
        {{"sensible-editor", "editor", "vi"}, {}, {"x"}, {"sensible-editor", file}, 0},
        {{"editor", "vi", "nano"}, {}, {"x"}, {"editor", file}, 0},
        {{"nano"}, {}, {"x"}, {"nano", file}, 0},
        {{"less"}, {}, {"x"}, {}, 3},
        {{"xdg-mime", "gedit", "one"}, {{"PAGER", "one"}}, {"-r", "x"}, {"one", file}, 0},
        {{"sensible-pager", "less"}, {}, {"-r", "x"}, {"sensible-pager", file}, 0},
        {{"less", "more"}, {{"PAGER", "one"}}, {"-r", "x"}, {"less", file}, 0},
        {{"more"}, {}, {"-r", "x"}, {"more", file}, 0},
        {{"vi"}, {}, {"-r", "x"}, {}, 3},
    };
    for (const Case& one : cases) {
        no_tools();
        for (const std::string& name : one.tools)
            tool(name, name == "xdg-mime" ? "echo gedit.desktop"
                       : name == "gio"
                           ? "echo \"Default application for 'text/plain': gedit.desktop\""
                           : "");
        const std::string input =
            ::testing::PrintToString(one.tools) + ::testing::PrintToString(one.variables);
        EXPECT_EQ(run("ored", one.arguments, one.variables), one.status) << input;
        EXPECT_EQ(started(),
                  one.started.empty() ? std::vector<Words>{} : std::vector<Words>{one.started})
            << input;
        EXPECT_EQ(errors_.rfind("ored: there is no ", 0) == 0, one.status == 3) << errors_;
    }
}

TEST_F(Adaptors, TheEditorsExitStatusIsPassedOn) {
    tool("vi", "exit 7");
    EXPECT_EQ(run("ored", {"x"}), 7);
    EXPECT_EQ(run("ored", {"x"}, {{"EDITOR", "vi"}}), 7);
    EXPECT_EQ(started().size(), 1u);
}

TEST_F(Adaptors, TheBrowserIsTheUsersThenTheDesktops) {
    struct Case {
        Words tools;
        std::string browser;
        Words started;
        int status;
    };
    const std::string url = "http://host/a?b='c d'&e";
    const Case cases[] = {
        {{"one", "xdg-open"}, "one", {"one", url}, 0},
        {{"two", "xdg-open"}, "one:two -n %s --x", {"two", "-n", url, "--x"}, 0},
        {{"two"}, "one::two --app=%s", {"two", "--app=" + url}, 0},
        {{"lynx", "xdg-open"}, "lynx -x", {"lynx", "-x", url}, 0},
        {{"xdg-open", "sensible-browser"}, "one", {"xdg-open", url}, 0},
        {{"sensible-browser", "firefox"}, "", {"sensible-browser", url}, 0},
        {{"gio"}, "", {"gio", "open", url}, 0},
        {{"chromium", "w3m"}, "", {"chromium", url}, 0},
        {{"w3m"}, "*", {"w3m", url}, 0},
        {{"eog"}, "", {}, 3},
    };
    for (const Case& one : cases) {
        no_tools();
        for (const std::string& name : one.tools)
            tool(name);
        EXPECT_EQ(run("lanthorn", {"-u", url}, {{"BROWSER", one.browser}}), one.status);
        EXPECT_EQ(started(),
                  one.started.empty() ? std::vector<Words>{} : std::vector<Words>{one.started})
            << ::testing::PrintToString(one.tools) << one.browser;
    }
    EXPECT_EQ(errors_, "lanthorn: there is no browser; set BROWSER to one, or install one\n");
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
        EXPECT_EQ(started(), (std::vector<Words>{{"xdg-open", url}}));
    }
    shown_ += "/two  blanks";
    EXPECT_EQ(run("lanthorn", split), 0) << errors_;
    EXPECT_EQ(started(),
              (std::vector<Words>{{"xdg-open", base + "/two%20%20blanks/it%20is%20-x.html"}}));
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
    EXPECT_EQ(calls(), (std::vector<Words>{{"file", "-L", "-b", "--", core}}));
    tool("file", says);
    EXPECT_EQ(run("dumpinfo", {"x.core"}), 0);
    ASSERT_EQ(calls().size(), 2u);
    const Words gdb = calls()[1];
    EXPECT_EQ(gdb.back(), "--core=" + core);
    EXPECT_EQ(gdb[gdb.size() - 2], "--se=" + shown_ + "/program");
    EXPECT_NE(output_.find("\nbacktrace\n"), std::string::npos) << output_;
    tool("coredumpctl");
    EXPECT_EQ(run("dumpinfo", {kept}), 0);
    ASSERT_EQ(calls().size(), 2u);
    EXPECT_EQ(calls()[1], (Words{"coredumpctl", "--no-pager", "info", "4711"}));
}

}  // namespace
}  // namespace dorn
