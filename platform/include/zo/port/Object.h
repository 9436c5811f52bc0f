#ifndef ZO_PORT_OBJECT_H
#define ZO_PORT_OBJECT_H

#include <string>

#include <boost/shared_ptr.hpp>

namespace zo {
namespace port {

// The base of every platform object. Objects are shared through boost::shared_ptr handles.
class Object {
  public:
    explicit Object(const std::string& className);
    virtual ~Object();

    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    virtual std::string getClassName() const;

  private:
    std::string m_className;
};

}  // namespace port
}  // namespace zo

#endif
