#pragma once

/// Is standard output a terminal that understands cursor sequences? On Windows the call also turns
/// that understanding on.
bool StandardOutputIsTerminal();
