#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

namespace jsonlib::json {

namespace {

/// The text with each character above 0xFFFF as its surrogate pair, as a text that is read holds
/// it.
std::wstring inUnits(std::wstring text) {
    bool isInUnits = true;
    // Without an early end, so that the compiler can look at many at once: hardly any text has one.
    for (const wchar_t character : text)
        isInUnits &= static_cast<std::uint32_t>(character) <= 0xFFFF;
    return isInUnits ? std::move(text) : OdString(std::move(text)).toWide();
}

}  // namespace

template <class Config>
struct Value_impl<Config>::ObjectBox {
    Object contents;
    ObjectBox* next = nullptr;
};

template <class Config>
struct Value_impl<Config>::ArrayBox {
    Array contents;
    ArrayBox* next = nullptr;
};

/// The boxes that are still to be destroyed, chained through themselves: destruction must neither
/// recurse nor allocate.
template <class Config>
struct Value_impl<Config>::Destruction {
    ObjectBox* objects = nullptr;
    ArrayBox* arrays = nullptr;

    /// Takes the value's box away from it, if it has one, so that its destructor finds nothing to
    /// do.
    void takeFrom(Value_impl& value) noexcept {
        if (value.type_ == Value_type::object) {
            value.payload_.plain.object->next = objects;
            objects = value.payload_.plain.object;
            value.type_ = Value_type::null;
        } else if (value.type_ == Value_type::array) {
            value.payload_.plain.array->next = arrays;
            arrays = value.payload_.plain.array;
            value.type_ = Value_type::null;
        }
    }

    void destroyObject() noexcept {
        ObjectBox* box = std::exchange(objects, objects->next);
        for (auto& [key, member] : box->contents)
            takeFrom(member);
        delete box;
    }

    void destroyArray() noexcept {
        ArrayBox* box = std::exchange(arrays, arrays->next);
        for (Value_impl& element : box->contents)
            takeFrom(element);
        delete box;
    }
};

/// The containers whose copies are made but still empty.
template <class Config>
struct Value_impl<Config>::Copy {
    struct Pair {
        const Value_impl* source;
        Value_impl* target;
    };
    std::vector<Pair> open;

    /// Copies a leaf; of a container makes the empty copy and leaves its contents for later.
    void start(const Value_impl& source, Value_impl& target) {
        if (source.type_ <= Value_type::array) {
            target =
                source.type_ == Value_type::object ? Value_impl(Object()) : Value_impl(Array());
            open.push_back({&source, &target});
        } else if (source.type_ == Value_type::string) {
            target = source.payload_.string;
        } else {
            target.payload_.plain = source.payload_.plain;
            target.type_ = source.type_;
            target.isUnsigned_ = source.isUnsigned_;
        }
    }

    void copyMembers(const Object& source, Object& target) {
        for (const auto& [key, member] : source)
            start(member, target.try_emplace(target.end(), key)->second);
    }

    void copyElements(const Array& source, Array& target) {
        // All the room at once: copies that are still empty are remembered by their address.
        target.reserve(source.size());
        for (const Value_impl& element : source)
            start(element, target.emplace_back());
    }

    void finish() {
        while (!open.empty()) {
            const auto [source, target] = open.back();
            open.pop_back();
            if (source->type_ == Value_type::object)
                copyMembers(source->getObject(), target->getObject());
            else
                copyElements(source->getArray(), target->getArray());
        }
    }
};

/// The containers that agree in kind and size but whose contents are still to be compared.
template <class Config>
struct Value_impl<Config>::Comparison {
    struct Pair {
        const Value_impl* left;
        const Value_impl* right;
    };
    std::vector<Pair> open;

    /// Compares leaves wholly and containers by kind and size.
    bool start(const Value_impl& left, const Value_impl& right) {
        if (left.type_ != right.type_)
            return false;
        switch (left.type_) {
            case Value_type::object:
                open.push_back({&left, &right});
                return left.getObject().size() == right.getObject().size();
            case Value_type::array:
                open.push_back({&left, &right});
                return left.getArray().size() == right.getArray().size();
            case Value_type::string:
                return left.payload_.string == right.payload_.string;
            case Value_type::boolean:
                return left.payload_.plain.boolean == right.payload_.plain.boolean;
            case Value_type::integer:
                return left.payload_.plain.integer == right.payload_.plain.integer &&
                       (left.isUnsigned_ == right.isUnsigned_ || left.payload_.plain.integer >= 0);
            case Value_type::real:
                return left.payload_.plain.real == right.payload_.plain.real;
            case Value_type::null:
                break;
        }
        return true;
    }

    bool compareMembers(const Object& left, const Object& right) {
        auto other = right.begin();
        for (const auto& [key, member] : left) {
            if (key != other->first || !start(member, other->second))
                return false;
            ++other;
        }
        return true;
    }

    bool compareElements(const Array& left, const Array& right) {
        for (std::size_t index = 0; index < left.size(); ++index) {
            if (!start(left[index], right[index]))
                return false;
        }
        return true;
    }

    bool finish() {
        while (!open.empty()) {
            const auto [left, right] = open.back();
            open.pop_back();
            const bool isEqual = left->type_ == Value_type::object
                                     ? compareMembers(left->getObject(), right->getObject())
                                     : compareElements(left->getArray(), right->getArray());
            if (!isEqual)
                return false;
        }
        return true;
    }
};

template <class Config>
Value_impl<Config>::Value_impl(Object object) : type_(Value_type::object) {
    payload_.plain.object = new ObjectBox{std::move(object)};
}

template <class Config>
Value_impl<Config>::Value_impl(Array array) : type_(Value_type::array) {
    payload_.plain.array = new ArrayBox{std::move(array)};
}

template <class Config>
Value_impl<Config>::Value_impl(String string) : type_(Value_type::string) {
    new (&payload_.string) String(inUnits(std::move(string)));
}

template <class Config>
Value_impl<Config>::Value_impl(const wchar_t* string)
    : Value_impl(string != nullptr ? String(string) : String()) {
}

template <class Config>
Value_impl<Config>::Value_impl(bool boolean) : type_(Value_type::boolean) {
    payload_.plain.boolean = boolean;
}

template <class Config>
Value_impl<Config>::Value_impl(int integer) : Value_impl(std::int64_t{integer}) {
}

template <class Config>
Value_impl<Config>::Value_impl(std::int64_t integer) : type_(Value_type::integer) {
    payload_.plain.integer = integer;
}

template <class Config>
Value_impl<Config>::Value_impl(std::uint64_t integer)
    : type_(Value_type::integer), isUnsigned_(true) {
    payload_.plain.integer = static_cast<std::int64_t>(integer);
}

template <class Config>
Value_impl<Config>::Value_impl(double real) : type_(Value_type::real) {
    payload_.plain.real = real;
}

// Made from null first, so that the destructor clears up what stands when memory ends halfway.
template <class Config>
Value_impl<Config>::Value_impl(const Value_impl& other) : Value_impl() {
    Copy copy;
    copy.start(other, *this);
    copy.finish();
}

template <class Config>
Value_impl<Config>& Value_impl<Config>::operator=(const Value_impl& other) {
    *this = Value_impl(other);
    return *this;
}

template <class Config>
const typename Value_impl<Config>::Object& Value_impl<Config>::getObject() const {
    require(Value_type::object);
    return payload_.plain.object->contents;
}

template <class Config>
typename Value_impl<Config>::Object& Value_impl<Config>::getObject() {
    require(Value_type::object);
    return payload_.plain.object->contents;
}

template <class Config>
const typename Value_impl<Config>::Array& Value_impl<Config>::getArray() const {
    require(Value_type::array);
    return payload_.plain.array->contents;
}

template <class Config>
typename Value_impl<Config>::Array& Value_impl<Config>::getArray() {
    require(Value_type::array);
    return payload_.plain.array->contents;
}

template <class Config>
const typename Value_impl<Config>::String& Value_impl<Config>::getString() const {
    require(Value_type::string);
    return payload_.string;
}

template <class Config>
bool Value_impl<Config>::getBool() const {
    require(Value_type::boolean);
    return payload_.plain.boolean;
}

template <class Config>
int Value_impl<Config>::getInt() const {
    return static_cast<int>(getInt64());
}

template <class Config>
std::int64_t Value_impl<Config>::getInt64() const {
    require(Value_type::integer);
    return payload_.plain.integer;
}

template <class Config>
std::uint64_t Value_impl<Config>::getUInt64() const {
    return static_cast<std::uint64_t>(getInt64());
}

template <class Config>
double Value_impl<Config>::getReal() const {
    if (type_ == Value_type::integer)
        return isUnsigned_ ? static_cast<double>(getUInt64()) : static_cast<double>(getInt64());
    require(Value_type::real);
    return payload_.plain.real;
}

template <class Config>
void Value_impl<Config>::clearContainer() noexcept {
    Destruction boxes;
    boxes.takeFrom(*this);
    while (boxes.objects != nullptr || boxes.arrays != nullptr) {
        if (boxes.objects != nullptr)
            boxes.destroyObject();
        else
            boxes.destroyArray();
    }
}

template <class Config>
bool Value_impl<Config>::equals(const Value_impl& other) const {
    Comparison comparison;
    return comparison.start(*this, other) && comparison.finish();
}

template <class Config>
void Value_impl<Config>::require(Value_type expected) const {
    if (type_ != expected)
        throw ValueError(type_, expected);
}

template class Value_impl<Config_map<std::wstring>>;

}  // namespace jsonlib::json
