// Session scripts: what parses, and errors that name the file and line.
#include "hostapp/SessionScript.h"

#include <gtest/gtest.h>

namespace {

using hostapp::SessionScript;

TEST(SessionScript, ParsesCommandsCommentsAndPaths)
{
    std::string error;
    const auto script = SessionScript::parse("# set-up\n"
                                             "window 800 600   # content size\n"
                                             "\n"
                                             "view -20 35 500 400\n"
                                             "wait 0.55\n"
                                             "save-mask  out dir/mask one.png  \n"
                                             "run\n",
        "s.txt", error);
    ASSERT_TRUE(script) << error;
    const auto& c = script->commands();
    ASSERT_EQ(c.size(), 5u);
    EXPECT_EQ(c[0].name, "window");
    EXPECT_EQ(c[0].line, 2);
    EXPECT_EQ(c[0].numbers, (std::vector<double> { 800, 600 }));
    EXPECT_EQ(c[1].numbers, (std::vector<double> { -20, 35, 500, 400 }));
    EXPECT_EQ(c[2].numbers, (std::vector<double> { 0.55 }));
    EXPECT_EQ(c[3].text, "out dir/mask one.png");
    EXPECT_EQ(c[4].name, "run");
    EXPECT_EQ(c[4].line, 7);
}

TEST(SessionScript, RefusesBadCommandsAndArgumentsWithFileAndLine)
{
    struct Case {
        const char* text;
        const char* error;
    };
    for (const Case& k : {
             Case { "run\nzoom 2\n", "s.txt:2: unknown command 'zoom'" },
             Case { "window 800\n", "s.txt:1: usage: window W H" },
             Case { "window 800 600 1\n", "s.txt:1: usage: window W H" },
             Case { "canvas 0 10\n", "s.txt:1: canvas: '0' must be a whole number from 1 to 30000" },
             Case { "canvas 10.5 10\n", "s.txt:1: canvas: '10.5' must be a whole number from 1 to 30000" },
             Case { "viewsize 1e9 10\n", "s.txt:1: viewsize: '1e9' must be a whole number from 1 to 30000" },
             Case { "layer-offset 5 x\n", "s.txt:1: layer-offset: 'x' is not a number" },
             Case { "layer-offset 5 5px\n", "s.txt:1: layer-offset: '5px' is not a number" },
             Case { "wait -1\n", "s.txt:1: wait: '-1' must be a number of seconds from 0 to 86400" },
             Case { "wait nan\n", "s.txt:1: wait: 'nan' is not a number" },
             Case { "wait inf\n", "s.txt:1: wait: 'inf' is not a number" },
             Case { "run now\n", "s.txt:1: usage: run" },
             Case { "save-mask\n", "s.txt:1: usage: save-mask FILE" },
             Case { "save-log   # no file\n", "s.txt:1: usage: save-log FILE" },
             Case { "down 10\n", "s.txt:1: usage: down X Y [N]" },
             Case { "down 10 20 1 1\n", "s.txt:1: usage: down X Y [N]" },
             Case { "down 10 20 0\n", "s.txt:1: down: '0' must be a click count from 1 to 9" },
             Case { "drag 10 2e7\n", "s.txt:1: drag: '2e7' must be a coordinate within +-1000000" },
             Case { "key enter\n", "s.txt:1: key: 'enter' is neither a key name nor one character" },
             Case { "key\n", "s.txt:1: usage: key delete|return|escape|tab|CHARACTER" },
             Case { "type\n", "s.txt:1: usage: type TEXT" },
             Case { "host-area 1 2 0 4\n", "s.txt:1: host-area: '0' must be a whole number from 1 to 30000" },
         }) {
        std::string error;
        EXPECT_FALSE(SessionScript::parse(k.text, "s.txt", error)) << k.text;
        EXPECT_EQ(error, k.error);
    }
    // A bad word of any length is quoted by its first 80 characters, cut between characters.
    std::string accents;
    for (int i = 0; i < 100000; ++i)
        accents += "\xC3\xA9";
    std::string error;
    EXPECT_FALSE(SessionScript::parse(accents + " 1\n", "s.txt", error));
    EXPECT_EQ(error, "s.txt:1: unknown command '" + accents.substr(0, 160) + "...'");
}

TEST(SessionScript, InputCommandsTakeOptionalCountsKeysAndText)
{
    std::string error;
    const auto script
        = SessionScript::parse("down 10.5 20\nup 10.5 20 2\nkey tab\nkey \xC3\xA9\ntype hello world\n", "s", error);
    ASSERT_TRUE(script) << error;
    const auto& c = script->commands();
    EXPECT_EQ(c[0].numbers, (std::vector<double> { 10.5, 20 }));
    EXPECT_EQ(c[1].numbers, (std::vector<double> { 10.5, 20, 2 }));
    EXPECT_EQ(c[2].text, "tab");
    EXPECT_EQ(c[3].text, "\xC3\xA9");
    EXPECT_EQ(c[4].text, "hello world");
}

TEST(SessionScript, LinesOfAnyBlanksAreEmpty)
{
    std::string error;
    const auto script = SessionScript::parse("\v\n\f \t\r\n  run \v\n", "s", error);
    ASSERT_TRUE(script) << error;
    ASSERT_EQ(script->commands().size(), 1u);
    EXPECT_EQ(script->commands()[0].line, 3);
}

TEST(SessionScript, AMissingFileIsReported)
{
    std::string error;
    EXPECT_FALSE(SessionScript::load("/nonexistent/session.txt", error));
    EXPECT_EQ(error, "/nonexistent/session.txt: cannot read the session script");
}

} // namespace
