#pragma once

namespace ZVSmartModel {

/// An open file of the system; closed with this object.
class OwnedDescriptor {
  public:
    explicit OwnedDescriptor(int number = -1) : number(number) {}
    OwnedDescriptor(OwnedDescriptor&& other) noexcept : number(other.Release()) {}
    OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept;
    ~OwnedDescriptor();

    int Number() const { return number; }
    bool IsOpen() const { return number >= 0; }
    int Release();

  private:
    int number;
};

}  // namespace ZVSmartModel
