// The usage example of the README, kept compiling and running.
#include <cstdio>
#include <memory>
#include <vector>

#include "TavrinDatabase.h"

using namespace Tavrin::Database;

int main() {
    const std::vector<FieldSpecification> fields = {
        FieldSpecification(1, "Id", FieldSpecification::UInt, 4, 0, 0),
        FieldSpecification(2, "Name", FieldSpecification::TextString, 32, 0, 0),
    };
    std::unique_ptr<FieldList> layout(ManagedFieldListFactory::GetInstance().Create(fields));

    std::vector<unsigned char> record(layout->GetDataLength());
    layout->ResetData(record.data());
    layout->SetField(record.data(), 2, "Grace", 5);

    char name[32];
    std::uint32_t length = 0;
    if (layout->GetField(record.data(), 2, name, sizeof name, length) == Tavrin::Status::Success)
        std::printf("%.*s\n", static_cast<int>(length), name);
}
