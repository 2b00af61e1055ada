#include "platform/WebRequests.h"

#include <utility>

#include <hv/HttpService.h>

void SetReplyText(HttpResponse* response, std::string head, std::shared_ptr<const std::string> text,
                  std::string tail) {
    response->body = std::move(head);
    if (text) {
        response->body.append(*text);
    }
    response->body.append(tail);
}

void SetBodyRule(hv::HttpService& /*service*/, const char* /*path*/, SBodyRule /*rule*/) {}
