#include "platform/WebRequests.h"

#include <utility>

#include <hv/HttpService.h>

void SetReplyText(HttpResponse* response, std::string head, std::shared_ptr<const std::string> text,
                  std::string tail) {
    response->body.clear();
    response->file.reset();
    response->pieces = {std::move(head), std::move(text), std::move(tail)};
}

void SetBodyRule(hv::HttpService& service, const char* path, SBodyRule rule) {
    service.bodyRules[path] = std::make_shared<const SBodyRule>(std::move(rule));
}
