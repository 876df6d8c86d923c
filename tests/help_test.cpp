#include <set>
#include <sstream>

#include "tool_support.h"

// What the tool says of itself: completions, the manual and colours.

namespace {

class HelpTest : public ToolFixture {
  protected:
    std::string Said(const std::string& words) {
        EXPECT_EQ(Run("$Z " + words), 0) << err;
        return out;
    }
};

TEST_F(HelpTest, CompletionsAndTheManualKnowWhatHelpKnows) {
    const auto completed = [this](const std::string& words, int current) {
        const std::string script = "source <($Z completion bash); COMP_WORDS=(" + words +
                                   "); COMP_CWORD=" + std::to_string(current) +
                                   "; _zvg; echo ${COMPREPLY[*]}";
        EXPECT_EQ(Run("touch good.zvg; export Z; bash -c '" + script + "'"), 0) << err;
        return out;
    };
    EXPECT_EQ(completed("zvg ver", 1), "verify\n");
    EXPECT_EQ(completed("zvg export --fl", 2), "--floor\n");
    EXPECT_EQ(completed("zvg info --fl", 2), "\n");
    EXPECT_EQ(completed("zvg info go", 2), "good.zvg\n");

    std::set<std::string> commands;
    std::istringstream all(completed("zvg \"\"", 1));
    for (std::string word; all >> word;) {
        if (word[0] != '-') commands.insert(word);
    }
    EXPECT_GE(commands.size(), 13U);
    int options = 0;
    const std::string zsh = Said("completion zsh"), fish = Said("completion fish");
    const std::string manual = Said("man");
    for (const std::string& command : commands) {
        EXPECT_NE(zsh.find("\n    '" + command + ":"), std::string::npos) << command;
        EXPECT_NE(fish.find("-a " + command + " -d '"), std::string::npos) << command;
        EXPECT_NE(manual.find("\n.SS zvg " + command), std::string::npos) << command;
        std::string help = Said(command + " --help");
        for (std::size_t at = help.find("  --"); at != std::string::npos;
             at = help.find("  --", at + 1)) {
            const std::string name =
                help.substr(at + 4, help.find_first_of(" \n,", at + 4) - at - 4);
            EXPECT_NE(fish.find("from " + command + "' -l " + name), std::string::npos) << name;
            ++options;
            std::string inManual = "\\-\\-";
            for (const char c : name) {
                if (c == '-') inManual += '\\';
                inManual += c;
            }
            EXPECT_NE(manual.find(inManual), std::string::npos) << inManual;
        }
    }
    EXPECT_GT(options, 30);
    // An apostrophe in a description ends no quotes.
    EXPECT_NE(zsh.find("components'\\'' surfaces"), std::string::npos);
}

TEST_F(HelpTest, ColoursAreForTerminalsOrOnRequest) {
    for (const auto& [option, coloured] :
         {std::pair{"", false}, {" --color never", false}, {" --color always", true}}) {
        EXPECT_EQ(Run("TERM=xterm $Z info nothere" + std::string(option)), 3);
        EXPECT_EQ(err.find("\x1b[") != std::string::npos, coloured) << option;
    }
}

}  // namespace
