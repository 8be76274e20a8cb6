#include <QORSysTS.h>

#include <iostream>

int main() {
    QORUnicodeString text("Zahnrad 7");
    QORUnicodeString shared = text; // one count more, no copy of the text
    std::cout << shared.ConvertToChar() << " has " << text.GetLengthInChar() << " code units\n";
}
