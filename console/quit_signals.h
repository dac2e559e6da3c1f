#pragma once

/// Ends the running application's event loop on SIGINT and SIGTERM, so that
/// everything is taken down in order. To be called once, after the application
/// has been made.
void quit_on_signals();
