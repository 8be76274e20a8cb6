// A library that no other test loads.

extern "C" int QORSysMTTestSparePlugInAnswer() {
    return 43;
}
