// PluginProtocol: what every plug-in controller answers to.
#pragma once

/// The host-facing operations of a controller, in the order the host's protocol lists them.
class PluginProtocol {
public:
    virtual void undo(void* argument) = 0;
    virtual void redo(void* argument) = 0;
    virtual void play(void* record) = 0;
    virtual void run() = 0;
    virtual void stop() = 0;

protected:
    ~PluginProtocol() = default;
};
