// An outside program that uses the installed library through its one public header.
#include <cstdio>

#include "TavrinDatabase.h"

int main() {
    Tavrin::MessageBuilder builder;
    if (builder.AppendString("installed") != Tavrin::Status::Success) return 1;
    Tavrin::MessageValidator validator(builder.GetBuffer(), builder.GetLength());
    std::string text;
    if (validator.ValidateString(&text, nullptr, nullptr) != Tavrin::Status::Success) return 1;
    std::printf("%s\n", text.c_str());
    return text == "installed" ? 0 : 1;
}
