#pragma once

#include <memory>
#include <string>

class HttpResponse;

// What the server asks of the HTTP library beyond the interface of libhv. The bundled library does all that
// is told here; for an installed libhv there is a plain stand-in (libraries/libhv), and each function tells
// what that one does instead.

/**
 * Makes head, text and tail, one behind the other, the body of a reply. The text is not copied: all replies
 * that are on their way share it, however slowly their clients read. A body that is set afterwards takes its
 * place. With libhv the reply gets a copy.
 * @param text  null: an empty one
 */
void SetReplyText(HttpResponse* response, std::string head, std::shared_ptr<const std::string> text,
                  std::string tail);
