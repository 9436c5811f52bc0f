#ifndef FRAME_INTERFACE_H
#define FRAME_INTERFACE_H

#include <string>

#include <boost/shared_ptr.hpp>

namespace frame {

// A named interface in the framework's registry: the name it was registered under and the object
// that implements it. The registry does not own the object.
class Interface {
  public:
    Interface(const std::string& name, void* implementation);
    ~Interface();

    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;

    const std::string& getName() const;
    // The object registered under the name, as the registering member passed it.
    void* getImplementation() const;

  private:
    std::string m_name;
    void* m_implementation;
};

typedef boost::shared_ptr<Interface> InterfacePtr;

}  // namespace frame

#endif
