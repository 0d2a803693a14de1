// SPDX-License-Identifier: Apache-2.0
// Parameters, LPC values, files and file sets.
#include "kallpc.h"
#include "kalfile.h"
#include "kalparameter.h"

namespace {
std::string* copyOf(const std::string* s) {
    return s ? new std::string(*s) : nullptr;
}
}  // namespace

kalparameter::kalparameter(const std::string* name_, const std::string* second, const std::string* value_,
                           const std::string* fourth)
    : name(nullptr), secondField(nullptr), fourthField(nullptr), value(nullptr) {
    if (!name_ || !second || !value_ || !fourth) return;
    name = copyOf(name_);
    secondField = copyOf(second);
    fourthField = copyOf(fourth);
    value = copyOf(value_);
}

void kalparameter::setValue(const std::string* value_) {
    if (!value_) return;
    delete value;
    value = copyOf(value_);
}

kalparameter::~kalparameter() {
    delete name;
    delete secondField;
    delete fourthField;
    delete value;
}

const std::string* kalparameter::getName() const {
    return name;
}
const std::string* kalparameter::getSecondField() const {
    return secondField;
}
const std::string* kalparameter::getFourthField() const {
    return fourthField;
}
const std::string* kalparameter::getValue() const {
    return value;
}

kallpc::kallpc(std::string value_) : value(std::move(value_)) {}
const std::string& kallpc::getValue() const {
    return value;
}

kalfile::kalfile(const std::string* name_, const std::string* second, const std::string* third)
    : name(nullptr), secondField(nullptr), thirdField(nullptr) {
    if (!name_ || !second) return;
    name = copyOf(name_);
    secondField = copyOf(second);
    thirdField = third ? copyOf(third) : new std::string();
}

namespace {
bool sameText(const std::string* a, const std::string* b) {
    if (!a || !b) return a == b;
    return *a == *b;
}
}  // namespace

// The third field and the attributes do not take part in equality.
bool kalfile::operator==(const kalfile& other) const {
    if (this == &other) return true;
    return sameText(name, other.name) && sameText(secondField, other.secondField);
}
bool kalfile::operator!=(const kalfile& other) const {
    return !(*this == other);
}

kalfile::~kalfile() {
    delete name;
    delete secondField;
    delete thirdField;
}

const std::string* kalfile::getName() const {
    return name;
}
const std::string* kalfile::getSecondField() const {
    return secondField;
}
const std::string* kalfile::getThirdField() const {
    return thirdField;
}

kalfileset::kalfileset(const std::string* name_, const std::string* second, const std::string* third)
    : owner(nullptr),
      name(nullptr),
      secondField(nullptr),
      thirdField(nullptr),
      reserved(nullptr),
      files(nullptr) {
    if (!name_ || !second) return;
    name = copyOf(name_);
    secondField = copyOf(second);
    thirdField = third ? copyOf(third) : new std::string();
    files = new std::vector<kalfile*>();
}

void kalfileset::addFile(const std::string* /*key: not used*/, kalfile* file) {
    if (!file || !files) return;
    files->push_back(file);
}

kalfileset::~kalfileset() {
    if (files) {
        for (auto* f : *files)
            delete f;
        files->clear();
        delete files;
    }
    delete name;
    delete secondField;
    delete thirdField;
}

kalcomponent* kalfileset::getOwner() const {
    return owner;
}
const std::string* kalfileset::getName() const {
    return name;
}
const std::string* kalfileset::getSecondField() const {
    return secondField;
}
const std::string* kalfileset::getThirdField() const {
    return thirdField;
}
std::vector<kalfile*> kalfileset::getFiles() const {
    return files ? *files : std::vector<kalfile*>();
}
void kalfileset::setOwner(kalcomponent* owner_) {
    owner = owner_;
}
