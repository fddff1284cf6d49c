// quillmark-host: the reference host application.
#include "hostapp/Demo.h"
#include "hostapp/InteractiveWindow.h"
#include "hostapp/PluginHost.h"
#include "hostapp/SessionRunner.h"
#include "hostapp/SessionScript.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int kUsageError = 2;

void printUsage(std::ostream& out)
{
    out << "usage:\n"
           "  quillmark-host [PICTURE.png]               open the canvas window (needs a display)\n"
           "  quillmark-host demo [--out DIR]            run the built-in demo (files go to DIR, default out)\n"
           "  quillmark-host session FILE [--out DIR]    run a session script headless\n"
           "  quillmark-host replay LOG... [--out DIR]   replay action logs onto a fresh document\n";
}

struct Options {
    std::string command;
    std::vector<std::string> files;
    std::filesystem::path outDir = "out";
};

/// A word that names a PNG file: a mistyped command stays a usage error instead of a window.
bool isPicture(const std::string& word)
{
    std::string ext = std::filesystem::path(word).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ext == ".png";
}

bool parseOptions(int argc, char** argv, Options& options)
{
    if (argc < 2)
        return false;
    options.command = argv[1];
    for (int i = 2; i < argc; ++i) {
        if (std::strcmp(argv[i], "--out") == 0) {
            if (++i == argc)
                return false;
            options.outDir = argv[i];
        } else {
            options.files.push_back(argv[i]);
        }
    }
    if (options.command == "demo")
        return options.files.empty();
    if (options.command == "session")
        return options.files.size() == 1;
    if (options.command == "replay")
        return !options.files.empty();
    return false;
}

int runScript(const PluginModule& table, const hostapp::SessionScript& script, const Options& options)
{
    std::error_code ec;
    std::filesystem::create_directories(options.outDir, ec);
    if (ec) {
        std::cerr << "quillmark-host: cannot make " << options.outDir.string() << ": " << ec.message() << "\n";
        return kUsageError;
    }
    hostapp::SessionRunner runner(table, options.outDir, std::cout);
    std::string error;
    if (!runner.run(script, error)) {
        std::cerr << error << "\n";
        return kUsageError;
    }
    return 0;
}

int runDemo(const PluginModule& table, const Options& options)
{
    std::error_code ec;
    std::filesystem::create_directories(options.outDir, ec);
    std::string error;
    if (ec || !hostapp::runDemo(table, options.outDir, std::cout, error)) {
        std::cerr << (ec ? "quillmark-host: cannot make " + options.outDir.string() : error) << "\n";
        return kUsageError;
    }
    return 0;
}

int runInteractive(const std::string& picture)
{
    std::string error;
    auto plugin = hostapp::PluginHost::loadInstalled(error);
    if (plugin) {
        hostapp::InteractiveWindow window(plugin->table(), picture);
        if (window.run(error))
            return 0;
    }
    std::cerr << "quillmark-host: " << error << "\n";
    printUsage(std::cerr);
    return 1;
}

/// The replay command as a session: a fresh document, the plug-in run, each log replayed, and
/// the resulting mask, picture and log saved. The log names are handed over as names, so that
/// no name, however odd, can add a command.
hostapp::SessionScript replayScript(const std::vector<std::string>& logs)
{
    std::vector<hostapp::SessionCommand> commands = { { 0, "run", {}, {} }, { 0, "wait", { 0.5 }, {} } };
    for (const std::string& log : logs)
        commands.push_back({ 0, "replay", {}, std::filesystem::absolute(log).string() });
    commands.push_back({ 0, "save-mask", {}, "replay-mask.png" });
    commands.push_back({ 0, "save-picture", {}, "replay-picture.png" });
    commands.push_back({ 0, "save-log", {}, "replay-log.jsonl" });
    return hostapp::SessionScript::fromCommands("replay", std::move(commands));
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (argc == 1)
        return runInteractive({});
    if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        printUsage(std::cout);
        return 0;
    }
    // One argument naming a PNG file is the picture the window opens.
    if (argc == 2 && isPicture(argv[1]))
        return runInteractive(argv[1]);
    if (!parseOptions(argc, argv, options)) {
        printUsage(std::cerr);
        return kUsageError;
    }
    std::string error;
    auto plugin = hostapp::PluginHost::loadInstalled(error);
    if (!plugin) {
        std::cerr << "quillmark-host: " << error << "\n";
        return 1;
    }
    if (options.command == "demo")
        return runDemo(plugin->table(), options);
    std::optional<hostapp::SessionScript> script;
    if (options.command == "session")
        script = hostapp::SessionScript::load(options.files[0], error);
    else
        script = replayScript(options.files);
    if (!script) {
        std::cerr << error << "\n";
        return kUsageError;
    }
    return runScript(plugin->table(), *script, options);
}
