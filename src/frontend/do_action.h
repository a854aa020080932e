// Performing the selected action.
#pragma once

// Runs the command of the action, writes the map back and regenerates kfx.conf where the action
// asks for it. Ends the run with the code of the first step that fails.
void DoAction();

// Tells other components of what the action has changed.
void NotifyOfAction();
