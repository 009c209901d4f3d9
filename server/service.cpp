#include "service.h"

namespace vdserver {

Reply Service::malformed() const
{
    return Reply::failure(tr("Неполные или повреждённые данные запроса"));
}

}  // namespace vdserver
