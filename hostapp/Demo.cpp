// Demo: a session that shows the plug-in's life in the host from start to end.
#include "hostapp/Demo.h"

namespace hostapp {

std::string_view demoScript()
{
    return R"(# The plug-in over a 1000 x 800 canvas in a 1200 x 900 window.
window 1200 900
canvas 1000 800
view 0 0 1000 800
viewsize 1000 800
run
# The overlay goes on screen half a second after the first run.
wait 0.6
stop
run
undo
redo
save-mask demo-mask.png
save-log demo-log.jsonl
replay demo-log.jsonl
save-mask demo-replayed-mask.png
destroy
)";
}

} // namespace hostapp
