// A library that needs a function which nobody has.

extern "C" int QORSysMTTestMissingPart();

extern "C" int QORSysMTTestBrokenPlugInCall() {
    return QORSysMTTestMissingPart();
}

extern "C" int QORSysMTTestBrokenPlugInAnswer() {
    return 44;
}
