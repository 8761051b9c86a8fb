#pragma once
// The consumer's own Record.
namespace consumer {
struct Record {
    int fields = 0;
};
}
