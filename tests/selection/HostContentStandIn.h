// HostContentStandIn: a host content view for tool tests that notes the events reaching it.
#pragma once

#include "kit/Event.h"
#include "kit/View.h"

#include <string>
#include <vector>

/// Stands in for the host's content view: notes the events that reach it, e.g. "down 120,110".
class HostContent final : public kit::View {
    KIT_MAKEABLE
public:
    std::vector<std::string> log;
    void mouseDown(const kit::Event& e) override { note("down", e); }
    void mouseDragged(const kit::Event& e) override { note("drag", e); }
    void mouseUp(const kit::Event& e) override { note("up", e); }
    void mouseMoved(const kit::Event& e) override { note("moved", e); }
    void rightMouseDown(const kit::Event& e) override { note("rightdown", e); }
    void rightMouseUp(const kit::Event& e) override { note("rightup", e); }
    bool performDragOperation(const kit::DraggingInfo& info) override
    {
        log.push_back("drop " + info.filenames.at(0));
        return true;
    }

private:
    using kit::View::View;
    void note(const char* what, const kit::Event& e)
    {
        log.push_back(std::string(what) + " " + std::to_string(int(e.locationInWindow().x)) + ","
            + std::to_string(int(e.locationInWindow().y)));
    }
};
