// Actions with a fault at every call that they make on a file. What a run without a fault leaves is
// the measure: a run with one leaves the old files or those, and the next run goes on.
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <regex>
#include <set>

#include "../sample_map.h"

namespace fs = std::filesystem;

namespace {

using Result = RunResult;

// The trees of these tests lie in memory where the system has such a folder.
const bool in_memory = fs::is_directory("/dev/shm") && setenv("TMPDIR", "/dev/shm", 1) == 0;

// The exit codes in a log, whose entries from the first banner on must be whole and by themselves.
// One of comments alone is that of a script that was refused.
std::vector<int> LoggedCodes(std::string log) {
    static const std::string kRule(74, '#');
    static const std::regex kEntry(
        kRule + R"(\n# Time: [\d/]{10} [\d:]{8}\n)" + kRule +
        R"(\n\n(?:(?:(?!###)[^\n]*\n)+?echo "Recorded Exit Code = (\d+), This Exit Code = \$\?"\n\n)"
        R"(# EXIT CODE: \1|# tqs apply script\n# [^\n]*\n\n# EXIT CODE: (\d+)))"
        R"(\n(?:\n|# ERROR MESSAGE:\n(?:#   [^\n]*\n)+\n))");
    log.erase(0, log.find(kRule));
    std::vector<int> codes;
    for (std::smatch entry;
         std::regex_search(log, entry, kEntry, std::regex_constants::match_continuous);) {
        codes.push_back(std::stoi(entry[1].str() + entry[2].str()));
        log.erase(0, static_cast<size_t>(entry.length()));
    }
    EXPECT_EQ(log, "");
    return codes;
}

const std::string kConfig = "kfxd.cfg";
const std::string kTemporaryMap = kMap + ".tmp";
const std::string kOldKfxConf = "old 1.2.3.4\n";
const std::string kNone = "(none)";

struct Scenario {
    std::string name;
    std::string words;
    std::string config = kNone;   // the -config file
    bool fresh = false;           // no lock file, no log and no kfx.conf yet
    std::string version = "3.0";  // of the map
};

const std::vector<Scenario> kScenarios = {
    {"AddPlatform", "-add platform -name p2 -model M100 -addr 10.0.0.2 -port 7002 -evfile basic",
     kNone, true},
    {"AddSystem", "-add system -name c2 -platform 1 -port 2002 -type linux"},
    {"UpdateSystem", "-update system -name 1 -port 2009 -type aix"},
    {"RemovePlatform", "-remove platform -name 1"},
    {"Cache", "-update cache -platform 1"},
    {"Security", "-security true"},
    {"KfxConf", "-write kfxconf"},
    {"Conversion", "-U", kNone, false, "2.0"},
    {"Config", "-config kfxd.cfg -set b=longer_than_before", "a=1\nb=22\n#c\n"},
    {"ConfigShorter", "-config kfxd.cfg -set b=", "a=1\nb=22\n#c\n"},
    {"ConfigMissing", "-config kfxd.cfg -set b=1"},
    {"View", "-view kfxconf"},
    {"ViewNothing", "-config kfxd.cfg -get none", "a=1\n"},
    {"Apply", "apply --no-notify kfxd script"}};

const std::string kCache = "<?xml version=\"1.0\"?>\n<Cache>\n<Cpu n=\"a\"/>\n</Cache>\n";
const std::string kScript =
    "tqsmgr -add platform -name p2 -model M100 -addr 10.0.0.2 -port 7002 -evfile basic\n"
    "tqsmgr -add system -name c2 -platform p2 -port 2002 -type linux\n"
    "tqsmgr -add system -name s -addr 10.0.0.3 -port 2003\n"
    "tqsmgr -update system -name 1 -port 2009 -type aix\n"
    "tqsmgr -update platform -name p2 -comment x\n"
    "tqsmgr -update cache -platform 1 <<EOF\n" +
    kCache +
    "EOF\n"
    "tqsmgr -remove system -name c2\n"
    "tqsmgr -add system -name c3 -platform p2 -port 2004\n"
    "tqsmgr -security true\n"
    "tqsmgr -write kfxconf\n";
constexpr size_t kCommands = 10;

std::string MapBefore(const std::string& version) {
    const std::string console =
        ConsoleText(8, "ID=1:2001;Address=~;Name=1;Type=linux;Port Number=2001");
    return MapText(
        PlatformText("ID=1;Name=1;Address=10.0.0.1;Port Number=7001",
                     console + "        <Cache>\n            <Old/>\n        </Cache>\n"),
        R"(serial="2" security="false" version=")" + version + "\"");
}

// What a failure of one of "calls" on "file" comes to; the first row that fits counts. A call
// without one does no harm. "*" at the end of a message stands for more.
const struct Consequence {
    std::string calls;
    std::string file;
    int code;
    std::string message;
} kConsequences[] = {
    {"Fchown Fchmod", "", 41, "Input/output error"},
    {"Stat Fstat", kLock, 43, "Lock file \"" + kLock + "\" was removed or replaced."},
    {"Open", kLog, 40, "Cannot open " + kLog},
    {"Reserve", kLog, 41, "Write failed for " + kLog},
    {"Open", kLock, 43, "Cannot open lock file \"" + kLock + "\"."},
    {"Flock", kLock, 43, "Input/output error"},
    {"Unlock", kLock, 44, "Input/output error"},
    {"Write", kLock, 43, "Cannot write pid to lock file \"" + kLock + "\"."},
    {"Unlink Open", kTemporaryMap, 40, "Cannot open \"" + kTemporaryMap + "\"."},
    {"Write Fsync Close", kTemporaryMap, 41, "Cannot write to \"" + kTemporaryMap + "\"."},
    {"Rename", kMap, 42, "Rename failed for \"" + kMap + "\"."},
    {"Open Read", kMap, 20, "*"},
    {"Open Read", "script", 40, "script: Input/output error"},
    {"Open Ftruncate", kKfxConf, 40, "Cannot open \"" + kKfxConf + "\"."},
    {"Write Close", kKfxConf, 41, "Write failed for \"" + kKfxConf + "\"."},
    {"Write", "pipe:", 41, "Write failed for \"*"},
    {"Mkstemp", "tmp/tqs", 40, "Cannot create temp file."},
    {"Write Fsync Close", "tmp/tqsconf", 41, "Cannot write to \"tmp/tqsconf*"},
    {"Write", "tmp/tqsmgr.", 41, "Cannot write to \"tmp/tqsmgr.*"},
    {"Open Read", kConfig, 40, "Cannot open \"" + kConfig + "\"."},
    {"Reserve Write Pwrite Ftruncate Fsync Fstat Close", kConfig, 41,
     "Cannot write to \"" + kConfig + "\"."},
    {"Open Read", kModels, 18, "*"},
    {"Open Read", kOsTypes, 17, "*"},
    {"Open", kEvents + "/", 26, "*"},
    // The input ends there, within the document or behind it.
    {"Read", "/stdin", 20, "*"}};

// The files that a run changes: the map, kfx.conf, the -config file.
using Contents = std::vector<std::string>;

class Faults : public testing::TestWithParam<int> {
  protected:
    Faults() {
        // A notification that cannot be run fails.
        tree_.Remove(kProduct + "bin");
        words_ = Words(is_script_ ? scenario_.words
                       : scenario_.name == "RemovePlatform"
                           ? "-nonotify kfxd " + scenario_.words
                           : "-nonotify web -nonotify kfxd " + scenario_.words);
        tree_.Write("script", kScript);
        Prepare();
        old_ = Read();
        unfaulted_ = Run(words_, "");
        EXPECT_EQ(unfaulted_.code, 0);
        new_ = Read();
    }

    void Prepare() const {
        const auto fresh = [this](const std::string& content) {
            return scenario_.fresh ? kNone : content;
        };
        tree_.Remove("tmp");
        fs::create_directory(tree_.Path("tmp"));
        for (const auto& [path, content] :
             std::map<std::string, std::string>{{kMap, MapBefore(scenario_.version)},
                                                {kConfig, scenario_.config},
                                                {kTemporaryMap, kNone},
                                                {kLock, fresh("")},
                                                {kLog, fresh("# begun\n")},
                                                {kKfxConf, fresh(kOldKfxConf)}}) {
            tree_.Remove(path);
            if (content != kNone) {
                tree_.Write(path, content);
            }
        }
    }

    [[nodiscard]] Contents Read() const {
        return {tree_.Read(kMap), tree_.Read(kKfxConf), tree_.Read(kConfig)};
    }

    // One run with a fault, or none; fault_ then says what it hit, or is empty.
    Result Run(const std::vector<std::string>& words, const std::string& fault) {
        tree_.Remove("fault");
        setenv("TQS_FAULT", fault.c_str(), 1);
        const Result r =
            tree_.Start(words, kCache, words[0] == "apply" ? TQS_FAULTS : TQSMGR_FAULTS).Wait();
        fault_ = tree_.Exists("fault") ? tree_.Read("fault") : "";
        return r;
    }

    // Runs with "kind:n:number", n from "first" on, until the fault is no more reached or a promise
    // is broken.
    void ForEach(const std::string& kind, int number,
                 const std::function<void(const Result&)>& check, int first = 1, int step = 1) {
        fault_ = kind;
        for (int n = first; !fault_.empty() && !HasFailure(); n += step) {
            const std::string fault = kind + ":" + std::to_string(n) + ":" + std::to_string(number);
            Prepare();
            const Result r = Run(words_, fault);
            SCOPED_TRACE(fault + " at " + fault_ + "code " + std::to_string(r.code) + ": " + r.err);
            // A conversion without the lists takes every value for an unknown one.
            if (scenario_.version == "3.0" || r.err.compare(0, 11, "cannot open") != 0) {
                const Contents now = Read();
                EXPECT_TRUE(now[0] == old_[0] || now[0] == new_[0]) << now[0];
                // A -config file that is lost is complete in its copy, a new one loses nothing.
                EXPECT_TRUE(now[2] == old_[2] || now[2] == new_[2] ||
                            (old_[2] == kNone ? now[2].empty()
                                              : tree_.Shell("cat tmp/tqsconf*").out == new_[2]))
                    << now[2];
                check(r);
                const bool reached = !fault_.empty();
                CheckNextRun(now);
                fault_ = reached ? kind : "";
            }
        }
    }

    // An ordinary run finds nothing to repair. Files in one state are looked at once; how far one
    // was written makes no difference.
    void CheckNextRun(const Contents& before) {
        std::string state = tree_.Read(kLock).empty() ? "free" : "held";
        state += tree_.Exists(kTemporaryMap) ? " tmp" : "";
        for (size_t i = 0; i < before.size(); ++i) {
            state += before[i] == old_[i] ? " old" : before[i] == new_[i] ? " new" : " part";
        }
        if (!states_.insert(state).second) {
            return;
        }
        const bool done = before[0] == new_[0] && old_[0] != new_[0];
        const Result next = Run(done ? Words("-write kfxconf") : words_, "");
        EXPECT_EQ(next.code, 0) << "next run: " << next.err;
        EXPECT_EQ(tree_.Read(kMap), new_[0]);
        EXPECT_EQ(tree_.Read(kLock), "");
        EXPECT_TRUE(new_[1] == old_[1] || tree_.Read(kKfxConf) == new_[1]);
        // A file that could not be written back to is the user's to restore from the copy.
        EXPECT_TRUE(tree_.Read(kConfig) == new_[2] || before[2] != old_[2]);
    }

    [[nodiscard]] bool Hit(const std::string& calls, const std::string& file) const {
        const size_t blank = fault_.find(' ');
        return !fault_.empty() && fault_.find(file, blank) != std::string::npos &&
               (calls.empty() ||
                (' ' + calls + ' ').find(' ' + fault_.substr(0, blank + 1)) != std::string::npos);
    }

    // Whether a run that ended so may be one of which the consequence is true.
    [[nodiscard]] bool Fits(const Consequence& c, const Result& r) const {
        const std::string wanted = (is_script_ ? "tqs: " : "tqsmgr: ") + c.message + '\n';
        const size_t star = wanted.find('*');
        return r.code == c.code &&
               (c.message == "*" || r.err.substr(0, star) == wanted.substr(0, star));
    }

    // The code is 0 and all is complete, or it is the one of the call that failed. A folder that
    // cannot be opened, or a file that cannot be looked at, fails as the file that is to be opened.
    void CheckCode(const Result& r) const {
        const bool is_look = Hit("OpenFolder Stat Fstat", "");
        const auto* const row = std::find_if(
            std::begin(kConsequences), std::end(kConsequences), [&](const Consequence& c) {
                return is_look
                           ? (Hit(c.calls, c.file) || c.calls.find("Open") != std::string::npos) &&
                                 Fits(c, r)
                           : Hit(c.calls, c.file);
            });
        const bool harmless = row == std::end(kConsequences);
        if (r.code == 0) {
            EXPECT_EQ(Read(), new_);
            EXPECT_EQ(r.out, unfaulted_.out);
            EXPECT_EQ(r.err, "");
            // The input may have been complete, what cannot be looked at may be missing, a lock be
            // looked at again, a folder need no sync, and an entry stay as it was appended.
            EXPECT_TRUE(harmless || row->file == "/stdin" || is_look || Hit("Open", kConfig) ||
                        (Hit("Open Fchown Fchmod", kLog) &&
                         (scenario_.name == "RemovePlatform" || is_script_)));
            return;
        }
        ASSERT_FALSE(harmless);
        EXPECT_TRUE(Fits(*row, r));
        // After the rename only kfx.conf and the release of the lock can fail.
        EXPECT_TRUE(tree_.Read(kMap) == old_[0] || row->file == kLock ||
                    Hit(row->calls, kKfxConf) || r.err.find(kKfxConf) != std::string::npos);
    }

    // One whole entry with the run's code, or one for each command that was done, the last with it;
    // or none where the log itself failed.
    void CheckLog(const Result& r, bool may_be_missing) const {
        const std::vector<int> codes = LoggedCodes(tree_.Read(kLog));
        std::vector<int> wanted(is_script_ && tree_.Read(kMap) == new_[0] ? kCommands : 1);
        wanted.back() = r.code;
        EXPECT_TRUE(codes == wanted || (codes.empty() && may_be_missing));
    }

    void CheckFailure(const Result& r) const {
        EXPECT_EQ(r.signal, 0);
        const std::string lock = tree_.Read(kLock);
        EXPECT_TRUE(lock.empty() || lock == kNone || Hit("Ftruncate", kLock)) << lock;
        EXPECT_NE(tree_.Read(kConfig), "");
        CheckCode(r);
        CheckLog(r, fault_.find("/logs/") != std::string::npos || Hit("", "script") ||
                        (Hit("OpenFolder", "") && (r.err.find(kLog) != std::string::npos ||
                                                   r.err.find("script") != std::string::npos)));
    }

    const Scenario& scenario_ = kScenarios.at(static_cast<size_t>(GetParam()));
    const bool is_script_ = scenario_.name == "Apply";
    const Tree tree_;
    std::set<std::string> states_;
    std::vector<std::string> words_;
    Contents old_;
    Contents new_;
    Result unfaulted_;
    std::string fault_;
};

}  // namespace

TEST_P(Faults, CallFails) {
    ForEach("fail", EIO, [this](const Result& r) { CheckFailure(r); });
}

TEST_P(Faults, WriteIsShort) {
    ForEach("short", EIO, [this](const Result& r) { CheckFailure(r); });
}

// A call is interrupted; or another run moves a file away between a look at it and its opening.
TEST_P(Faults, FailureIsPassing) {
    for (const int number : {EINTR, ENOENT}) {
        ForEach("fail", number, [this, number](const Result& r) {
            const bool is_moved = Hit("Open", kLog) || Hit("Open", kLock) || Hit("Open", kKfxConf);
            if (number == EINTR ? Hit("Flock Read Write Pwrite", "")
                                : is_moved && !scenario_.fresh) {
                EXPECT_EQ(r.code, 0);
                EXPECT_EQ(Read(), new_);
            }
        });
    }
}

// The log has whole entries, and what was created shuts nobody out and lets nobody in.
TEST_P(Faults, Killed) {
    if (scenario_.fresh) {
        for (const char* folder : {"config", "logs"}) {
            fs::permissions(tree_.Path(kProduct + folder), fs::perms::set_gid,
                            fs::perm_options::add);
        }
    } else {
        EXPECT_EQ(tree_.Shell("chgrp $G usr/opt/tqs").code, 0);
    }
    struct stat product {};
    stat(tree_.Path("usr/opt/tqs").c_str(), &product);
    const mode_t before = umask(scenario_.fresh ? 077 : 0);
    ForEach("signal", SIGKILL, [this, group = product.st_gid](const RunResult&) {
        const size_t logged = LoggedCodes(tree_.Read(kLog)).size();
        EXPECT_TRUE(logged == 0 || logged == (is_script_ ? kCommands : 1));
        const std::string config = old_[2] == kNone ? kConfig : kTemporaryMap;
        for (const std::string& path : scenario_.fresh
                                           ? std::vector{kLock, kLog, kKfxConf, kTemporaryMap}
                                           : std::vector{kTemporaryMap, config}) {
            struct stat status {};
            stat(tree_.Path(path).c_str(), &status);
            const mode_t mode = status.st_mode & 07777U;
            EXPECT_TRUE(!tree_.Exists(path) ||
                        (mode == (path == config ? 0770U : 0660U) && status.st_gid == group) ||
                        (!scenario_.fresh && (mode & 07077U) == 0))
                << path;
        }
    });
    umask(before);
}

TEST_P(Faults, Terminated) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        // Whoever runs the tests may ignore it.
        std::signal(signal, SIG_DFL);
        ForEach("signal", signal, [this, signal](const Result& r) {
            EXPECT_TRUE(r.code == 0 || r.signal == signal);
            EXPECT_EQ(Read(), LoggedCodes(tree_.Read(kLog)).empty() ? old_ : new_);
        });
    }
}

TEST_P(Faults, PowerFails) {
    const auto check = [this](const Result& r) {
        const Contents now = Read();
        EXPECT_TRUE(r.code != 0 || now[0] == new_[0]);
        EXPECT_TRUE(r.code != 0 || now[2] == new_[2] || old_[2] == kNone) << now[2];
    };
    for (const int lost : {0, 1, 2}) {
        ForEach("power", lost, check);
    }
}

TEST_P(Faults, DiskIsFull) {
    size_t need = 200;  // an entry of the log
    for (size_t i = 0; i < old_.size(); ++i) {
        need += old_[i] == new_[i] ? 0 : new_[i].size();
    }
    // At every byte where these are few, among them those of a map, kfx.conf and a -config file.
    const int step = need < 1500 ? 1 : static_cast<int>(need / 40);
    for (const int way : {0, 1}) {
        const auto check = [this, way](const Result& r) {
            CheckCode(r);
            CheckLog(r, way == 1);
        };
        ForEach("full", way, check, 0, step);
    }
}

INSTANTIATE_TEST_SUITE_P(, Faults, testing::Range(0, static_cast<int>(kScenarios.size())),
                         [](const auto& i) {
                             return kScenarios.at(static_cast<size_t>(i.param)).name;
                         });
