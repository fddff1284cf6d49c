// TrackingArea: construction.
#include "kit/TrackingArea.h"

namespace kit {

RefPtr<TrackingArea> TrackingArea::create(const Rect& rect, unsigned options, Responder* owner, std::string userInfo)
{
    return adoptRef(new TrackingArea(rect, options, owner, std::move(userInfo)));
}

} // namespace kit
