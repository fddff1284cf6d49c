// DragsToContentView: hands every file drag over a view to its window's content view.
#pragma once

#include "kit/View.h"
#include "kit/Window.h"

/// The overlay and the tool views take no drops of their own: the host's content view lies
/// under them and decides, so a picture dropped on the overlay still reaches the host.
template <typename Base> class DragsToContentView : public Base {
public:
    kit::DragOperation draggingEntered(const kit::DraggingInfo& info) override
    {
        kit::View* content = hostContentView();
        return content ? content->draggingEntered(info) : kit::DragOperationNone;
    }
    kit::DragOperation draggingUpdated(const kit::DraggingInfo& info) override
    {
        kit::View* content = hostContentView();
        return content ? content->draggingUpdated(info) : kit::DragOperationNone;
    }
    void draggingExited(const kit::DraggingInfo& info) override
    {
        if (kit::View* content = hostContentView())
            content->draggingExited(info);
    }
    void draggingEnded(const kit::DraggingInfo& info) override
    {
        if (kit::View* content = hostContentView())
            content->draggingEnded(info);
    }
    bool performDragOperation(const kit::DraggingInfo& info) override
    {
        kit::View* content = hostContentView();
        return content && content->performDragOperation(info);
    }

protected:
    using Base::Base;

private:
    kit::View* hostContentView() const { return this->window() ? this->window()->contentView() : nullptr; }
};
