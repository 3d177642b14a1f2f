// The adaptor programs as dorn runs them, on a PATH of the test's own: which of the desktop's tools
// they run, and with exactly which arguments.
#include "support/child.h"
#include "support/sandbox.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace dorn {
namespace {

using Words = std::vector<std::string>;
using ::testing::PrintToString;

class Adaptors : public ::testing::Test {
  protected:
    Adaptors() {
        for (const char* folder : {"system", "shown", "data", "data/applications"})
            sandbox_.mkdir(folder);
        // What the scripts themselves are made of.
        for (const std::string tool :
             {"awk", "date", "dirname", "env", "od", "sed", "setsid", "sh", "tr"})
            sandbox_.link("/usr/bin/" + tool, "system/" + tool);
    }

    // These tools alone are installed. Each notes how it was called, unless it is only asked
    // something, and then runs the code that stands behind its name and a colon.
    void install(const Words& tools) const {
        std::filesystem::remove_all(sandbox_.file("bin"));
        sandbox_.mkdir("bin");
        const std::string note =
            "printf '%s\\0' \"$#\" \"${0##*/}\" \"$@\" >>" + sandbox_.file("log");
        for (const std::string& tool : tools) {
            std::istringstream parts(tool);
            std::string name, code;
            std::getline(std::getline(parts, name, ':'), code);
            sandbox_.script("bin/" + name,
                            "case $1 in mime | query) ;; *) " + note + " ;; esac\n" + code);
        }
    }

    // Runs an adaptor in the shown directory, with variables in its environment; its exit status.
    int run(const Words& command, const Words& variables = {}) {
        Words words = {"/usr/bin/env",
                       "-i",
                       "DISPLAY=:99",
                       "HOME=" + sandbox_.file("home"),
                       "PATH=" + sandbox_.file("bin") + ":" + sandbox_.file("system"),
                       "XDG_DATA_DIRS=" + sandbox_.file("data")};
        words.insert(words.end(), variables.begin(), variables.end());
        words.insert(words.end(), command.begin(), command.end());
        words[words.size() - command.size()].insert(0, DORN_ADAPTORS "/");
        ChildSetting setting;
        setting.directory = shown_;
        setting.output = sandbox_.file("output");
        setting.errors = sandbox_.file("errors");
        sandbox_.write("log");
        const int status = end_of_child(start_child(words, setting));
        output_ = sandbox_.read("output");
        errors_ = sandbox_.read("errors");
        return status;
    }

    // The calls of tools in the last run, sorted: the words with "|" between them, "@" for the
    // shown directory.
    Words started() const {
        std::istringstream log(sandbox_.read("log"));
        Words calls;
        for (std::string word; std::getline(log, word, '\0');) {
            std::string call;
            for (int words = std::stoi(word); words >= 0; --words) {
                std::getline(log, word, '\0');
                if (const std::size_t at = word.find(shown_); at != std::string::npos)
                    word.replace(at, shown_.size(), "@");
                call += (call.empty() ? "" : "|") + word;
            }
            calls.push_back(call);
        }
        std::sort(calls.begin(), calls.end());
        return calls;
    }
    bool is_owned() const {
        return std::filesystem::exists(shown_ + "/owned");
    }

    Sandbox sandbox_;
    std::string shown_ = sandbox_.file("shown"), output_, errors_;
};

TEST_F(Adaptors, RunWhatTheUserOrTheDesktopHasElseTheFirstThatIsThere) {
    const std::string url = "http://host/a?b='c d'&e";
    for (const char* name : {"x", "y.core", "core.cat.0.aa.4711.99.zst", "program"})
        sandbox_.write(std::string("shown/") + name);
    sandbox_.mkdir("shown/folder");
    sandbox_.link("folder", "shown/link");
    sandbox_.write("data/applications/gedit.desktop", "[Desktop Entry]\nExec=gedit %F\n");
    const Words view = {"orv", "x"}, play = {"orplay", "x"}, edit = {"ored", "x"},
                read = {"ored", "-r", "x"}, browse = {"lanthorn", "-u", url},
                core = {"dumpinfo", "y.core"}, kept = {"dumpinfo", "core.cat.0.aa.4711.99.zst"};
    const std::string mime = "xdg-mime: echo gedit.desktop";
    const std::string gio = "gio: echo \"Default application for 'text/plain': gedit.desktop\"";
    const std::string elf = "file: echo \"ELF core file, execfn: '" + shown_ + "/program', x\"";
    const std::string gdb = "gdb|-batch|-nx|-iex|set auto-load off|-ex|thread apply all backtrace|";
    struct Row {
        Words command, tools, variables, started;
        int status = 0;
    };
    const Row rows[] = {
        {view, {"xdg-open: echo a; echo b >&2", "gio", "eog"}, {}, {"xdg-open|@/x"}},
        {view, {"xdg-open: exit 3", "gio"}, {}, {"gio|open|@/x", "xdg-open|@/x"}},
        {view, {"xdg-open: exit 4", "exo-open"}, {}, {"exo-open|@/x", "xdg-open|@/x"}},
        {view, {"gio: exit 4", "feh", "mpv"}, {}, {"feh|@/x", "gio|open|@/x"}},
        {view, {"mpv"}, {}, {}, 3},
        {{"orv", "folder", "x"}, {"xdg-open"}, {}, {"xdg-open|@/x"}, 1},
        {{"orv", "mis\x1b\xc2\x9bsing", "x"}, {"xdg-open"}, {}, {"xdg-open|@/x"}, 1},
        {{"orv"}, {"xdg-open"}, {}, {}, 2},
        {play, {"xdg-open: exit 3", "mpv", "vlc"}, {}, {"vlc|@/x", "xdg-open|@/x"}},
        {edit, {mime, "gedit", "vi"}, {"DISPLAY="}, {"vi|@/x"}},
        {edit, {gio, "gedit", "vi"}, {"DISPLAY=", "WAYLAND_DISPLAY=w"}, {"gedit|@/x"}},
        {edit, {"one", "two", "vi"}, {"VISUAL=one", "EDITOR=two"}, {"one|@/x"}},
        {edit, {"two", "vi"}, {"VISUAL=one", "EDITOR=two -w"}, {"two|-w|@/x"}},
        {edit, {"sensible-editor", "editor", "vi"}, {}, {"sensible-editor|@/x"}},
        {edit, {"vi: exit 7"}, {}, {"vi|@/x"}, 7},
        {edit, {"less"}, {}, {}, 3},
        {{"ored", "to-be-made"}, {"vi"}, {}, {"vi|@/to-be-made"}},
        {{"ored", "x", "link"}, {"vi"}, {}, {}, 1},
        {{"ored", "-q", "x"}, {"vi"}, {}, {}, 2},
        {read, {mime, "gedit", "one"}, {"PAGER=one"}, {"one|@/x"}},
        {read, {"less", "more"}, {"PAGER=one"}, {"less|@/x"}},
        {read, {"vi"}, {}, {}, 3},
        {browse, {"two", "xdg-open"}, {"BROWSER=one:two -n %s --x"}, {"two|-n|" + url + "|--x"}},
        {browse, {"two"}, {"BROWSER=one::two --app=%s"}, {"two|--app=" + url}},
        {browse, {"lynx", "xdg-open"}, {"BROWSER=lynx -x"}, {"lynx|-x|" + url}},
        {browse, {"xdg-open", "sensible-browser"}, {"BROWSER=one"}, {"xdg-open|" + url}},
        {browse, {"gio"}, {}, {"gio|open|" + url}},
        {browse, {"eog"}, {}, {}, 3},
        {{"lanthorn", "-u", "file://" + shown_ + "/folder"}, {"xdg-open"}, {}, {}, 1},
        {{"dumpinfo", "folder"}, {"file", "gdb"}, {}, {}, 1},
        {core, {}, {}, {}, 3},
        {core, {"file", "gdb"}, {}, {"file|-L|-b|--|@/y.core"}},
        {core,
         {elf, "gdb"},
         {},
         {"file|-L|-b|--|@/y.core", gdb + "--se=@/program|--core=@/y.core"}},
        {kept, {"coredumpctl", "gdb"}, {}, {"coredumpctl|--no-pager|info|4711"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(PrintToString(row.command) + PrintToString(row.tools) +
                     PrintToString(row.variables));
        install(row.tools);
        EXPECT_EQ(run(row.command, row.variables), row.status);
        EXPECT_EQ(started(), row.started);
        EXPECT_TRUE(output_.empty() || row.command[0] == "dumpinfo") << output_;
        EXPECT_TRUE(row.status == 0 || row.status == 7 || !errors_.empty()) << "it must be told";
        EXPECT_EQ(errors_.find_first_of("\x1b\x9b"), std::string::npos);
    }
}

TEST_F(Adaptors, NamesReachTheProgramAsTheyAre) {
    install({"xdg-open", "vi", "less"});
    for (const std::string folder : {"shown", "shown/a b\n'$(touch owned)"}) {
        shown_ = sandbox_.file(folder);
        std::filesystem::create_directory(shown_);
        for (const std::string& name : hostile_names()) {
            sandbox_.write(folder + "/" + name);
            const std::tuple<Words, Words, std::string> rows[] = {
                {{"orv", name}, {}, "xdg-open|@/"},
                {{"orplay", name}, {}, "xdg-open|@/"},
                {{"ored", name}, {}, "vi|@/"},
                {{"ored", "-r", "a", name}, {"PAGER=less -S"}, "less|-S|@/a|@/"},
                {{"ored", "a", name}, {"VISUAL=vi -c 'set t=2'"}, "vi|-c|set t=2|@/a|@/"},
            };
            for (const auto& [command, variables, call] : rows) {
                EXPECT_EQ(run(command, variables), 0) << command[0] << " " << name;
                EXPECT_EQ(started(), Words{call + name});
                EXPECT_EQ(errors_, "") << name;
            }
        }
        EXPECT_FALSE(is_owned());
    }
}

TEST_F(Adaptors, TheEditorIsTheDesktopsForPlainText) {
    const std::pair<std::string, Words> rows[] = {
        {"Exec=gedit", {"gedit|@/a b|@/c"}},
        {"Exec=gedit --title=%c -i %i %F --last", {"gedit|--title=|-i|@/a b|@/c|--last"}},
        {"Exec = env \"A=it's\" 'b c' gedit 100%% \"\" --file=%f",
         {"gedit|100%||--file=@/a b", "gedit|100%||--file=@/c"}},
        {"Exec=gedit \"a \\\\$b \\\\\\\\ \\\\\"\" x\\sy %F\r", {"gedit|a $b \\ \"|x|y|@/a b|@/c"}},
        {"Exec=gedit $(touch owned) `touch owned`; 'touch owned' & %F",
         {"gedit|$(touch|owned)|`touch|owned`;|touch owned|&|@/a b|@/c"}},
        {"Exec=micro %f\nTerminal=true", {"micro|@/a b", "micro|@/c"}},
        {"Exec=missing %F", {"vi|@/a b|@/c"}},
        {"Exec=failing %F", {"failing|@/a b|@/c", "vi|@/a b|@/c"}},
        {"Comment=no command", {"vi|@/a b|@/c"}},
    };
    install({"gedit", "micro", "vi", "failing: exit 1", "xdg-mime: echo vendor-editor.desktop"});
    sandbox_.script("bin/b c", "exec \"$@\"");
    sandbox_.mkdir("data/applications/vendor");
    for (const auto& [entry, calls] : rows) {
        for (const std::string place : {"vendor-editor.desktop", "vendor/editor.desktop"}) {
            const std::string path = "data/applications/" + place;
            sandbox_.write(path, "[Other]\nExec=wrong\n[Desktop Entry]\n" + entry +
                                     "\n[Desktop Action x]\nExec=wrong\nTerminal=true\n");
            EXPECT_EQ(run({"ored", "a b", "c"}), 0) << entry;
            EXPECT_EQ(started(), calls) << entry;
            EXPECT_FALSE(is_owned()) << entry;
            std::filesystem::remove(sandbox_.file(path));
        }
    }
}

TEST_F(Adaptors, BarePathsBecomeUrlsAndUrlsStay) {
    install({"xdg-open"});
    sandbox_.mkdir("shown/two  blanks");
    for (const char* name : {"a#b %41?.html", "bad\xff\n.html", "two  blanks/it is -x.html"})
        sandbox_.write(std::string("shown/") + name);
    const std::string base = "file://" + shown_;
    const std::tuple<std::string, Words, std::string> rows[] = {
        {"", {base + "/a#b %41?.html"}, "file://@/a%23b%20%2541%3F.html"},
        {"", {base + "/bad\xff\n.html"}, "file://@/bad%FF%0A.html"},
        {"", {base + "/missing%20x.html#here"}, "file://@/missing%20x.html#here"},
        {"", {"mailto:x"}, "mailto:x"},
        // What dorn's shell makes of "lanthorn -u file://$PWD/'name' ".
        {"/two  blanks",
         {base + "/two", "blanks/it is -x.html"},
         base + "/two%20%20blanks/it%20is%20-x.html"},
    };
    for (const auto& [folder, arguments, url] : rows) {
        shown_ = sandbox_.file("shown") + folder;
        Words command = {"lanthorn", "-u"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(run(command), 0) << url << errors_;
        EXPECT_EQ(started(), Words{"xdg-open|" + url});
    }
}

}  // namespace
}  // namespace dorn
