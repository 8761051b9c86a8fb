#pragma once
// The consumer's own Table.
namespace consumer {
struct Table {
    int rows = 0;
};
}
