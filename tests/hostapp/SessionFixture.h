// SessionFixture: a session runner over the built plug-in and a fresh document, for host tests.
#pragma once

#include "hostapp/SessionRunner.h"
#include "kit/RunLoop.h"
#include "tests/support/BuiltPlugin.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

class SessionFixture : public testing::Test {
protected:
    void SetUp() override
    {
        std::string error;
        plugin = loadBuiltPlugin(error);
        ASSERT_TRUE(plugin) << error;
        runner = std::make_unique<hostapp::SessionRunner>(plugin->table(), dir.path(), report);
    }
    void TearDown() override
    {
        runner.reset();
        kit::RunLoop::main().advance(10);
    }
    /// Runs script text as "t.session"; false with `error` set at the first failing line.
    bool run(const std::string& text, std::string& error)
    {
        auto script = hostapp::SessionScript::parse(text, "t.session", error);
        return script && runner->run(*script, error);
    }

    TempDir dir;
    std::ostringstream report;
    std::unique_ptr<hostapp::PluginHost> plugin;
    std::unique_ptr<hostapp::SessionRunner> runner;
};
