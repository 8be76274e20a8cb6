// Ends the process when it is called: that it is there is all that anyone asks.
extern "C" void DEV_PHASE_FUNCTION() {
    __builtin_trap();
}
