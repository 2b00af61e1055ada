#include "platform/WebRequests.h"

#include <utility>

#include <hv/HttpMessage.h>

void SetReplyText(HttpResponse* response, std::string head, std::shared_ptr<const std::string> text,
                  std::string tail) {
    response->body.clear();
    response->file.reset();
    response->pieces = {std::move(head), std::move(text), std::move(tail)};
}
