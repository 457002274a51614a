// The road's template library and the list of template applications.
#include "qv5/georoad.h"

#include "road/road_storage.h"

#include "qv5/geotemplate.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

using namespace qv5::detail;

int CGeoRoad::AddTemplate(CGeoTemplate* templ) {
    if (templ == nullptr || m_numTemplates == INT_MAX || OwnArrays() == 0) {
        return 0;
    }
    // The library is replaced as a whole: a new array, the kept templates copied into it.
    auto* library = new (std::nothrow) CGeoTemplate[std::size_t(m_numTemplates) + 1];
    if (library == nullptr) {
        return 0;
    }
    for (int i = 0; i < m_numTemplates; ++i) {
        library[i] = m_templates[i];
    }
    library[m_numTemplates] = *templ;
    free_templates(m_templates);
    m_templates = library;
    ++m_numTemplates;
    m_modified = 1;
    return 1;
}

int CGeoRoad::GetNthTemplate(int n, CGeoTemplate* out) {
    if (n < 0 || n >= m_numTemplates || out == nullptr) {
        return 0;
    }
    *out = m_templates[n];
    return 1;
}

int CGeoRoad::SetNthTemplate(int n, CGeoTemplate* templ) {
    if (n < 0 || n >= m_numTemplates || templ == nullptr || OwnArrays() == 0) {
        return 0;
    }
    m_templates[n] = *templ;
    m_modified = 1;
    return 1;
}

int CGeoRoad::DeleteNthTemplate(int n) {
    if (n < 0 || n >= m_numTemplates || OwnArrays() == 0) {
        return 0;
    }
    CGeoTemplate* library = nullptr;
    if (m_numTemplates > 1) {
        library = new (std::nothrow) CGeoTemplate[std::size_t(m_numTemplates) - 1];
        if (library == nullptr) {
            return 0;
        }
        for (int i = 0, j = 0; i < m_numTemplates; ++i) {
            if (i != n) {
                library[j++] = m_templates[i];
            }
        }
    }
    // The applications keep their indices: those after n now name the template that moved
    // into their old slot.
    free_templates(m_templates);
    m_templates = library;
    --m_numTemplates;
    m_modified = 1;
    return 1;
}

int CGeoRoad::TemplateIndex(CString name) {
    for (int i = 0; i < m_numTemplates; ++i) {
        if (m_templates[i].Name().CompareNoCase(name) == 0) {
            return i;
        }
    }
    return -1;
}

int CGeoRoad::NumberTemplates() const {
    return m_numTemplates;
}

int CGeoRoad::AddTemplateApplication(CString name, double station, geodef_RoadSide side) {
    const int index = TemplateIndex(name);
    if (index < 0 || m_numTemplateApplications == INT_MAX || OwnArrays() == 0) {
        return 0;
    }
    void* grown = grow_records(m_templateApplications, std::size_t(m_numTemplateApplications),
                               sizeof(TemplateApplicationRecord));
    if (grown == nullptr) {
        return 0;
    }
    m_templateApplications = static_cast<TemplateApplicationRecord*>(grown);
    TemplateApplicationRecord& record = m_templateApplications[m_numTemplateApplications];
    record.templateIndex = index;
    record.station = station;
    record.side = side;
    ++m_numTemplateApplications;
    m_modified = 1;
    return 1;
}

int CGeoRoad::GetNthTemplateApplication(int n, CString& name, double& station,
                                        geodef_RoadSide& side) {
    if (n < 0 || n >= m_numTemplateApplications) {
        return 0;
    }
    const TemplateApplicationRecord& record = m_templateApplications[n];
    if (record.templateIndex < 0 || record.templateIndex >= m_numTemplates) {
        return 0;
    }
    name = m_templates[record.templateIndex].Name();
    station = record.station;
    side = record.side;
    return 1;
}

int CGeoRoad::SetNthTemplateApplication(int n, CString name, double station, geodef_RoadSide side) {
    if (n < 0 || n >= m_numTemplateApplications) {
        return 0;
    }
    const int index = TemplateIndex(name);
    if (index < 0 || OwnArrays() == 0) {
        return 0;
    }
    TemplateApplicationRecord& record = m_templateApplications[n];
    record.templateIndex = index;
    record.station = station;
    record.side = side;
    m_modified = 1;
    return 1;
}

int CGeoRoad::DeleteNthTemplateApplication(int n) {
    if (n < 0 || n >= m_numTemplateApplications || OwnArrays() == 0) {
        return 0;
    }
    std::memmove(m_templateApplications + n, m_templateApplications + n + 1,
                 sizeof(TemplateApplicationRecord) *
                     std::size_t(m_numTemplateApplications - n - 1));
    --m_numTemplateApplications;
    if (m_numTemplateApplications == 0) {
        std::free(m_templateApplications);
        m_templateApplications = nullptr;
    } else {
        void* shrunk =
            std::realloc(m_templateApplications, sizeof(TemplateApplicationRecord) *
                                                     std::size_t(m_numTemplateApplications));
        if (shrunk != nullptr) {
            m_templateApplications = static_cast<TemplateApplicationRecord*>(shrunk);
        }
    }
    m_modified = 1;
    return 1;
}

int CGeoRoad::NumberTemplateApplications() const {
    return m_numTemplateApplications;
}

int CGeoRoad::NumberCurbFeatures() {
    if (m_numTemplateApplications == 0) {
        return 0;
    }
    const TemplateApplicationRecord& first = m_templateApplications[0];
    if (first.templateIndex < 0 || first.templateIndex >= m_numTemplates) {
        return 0;
    }
    // Only the first application counts, and its template is looked up by name.
    const int index = TemplateIndex(m_templates[first.templateIndex].Name());
    if (index < 0) {
        return 0;
    }
    const CGeoTemplate& templ = m_templates[index];
    int count = 0;
    for (int i = 0; i < templ.NumberElements(); ++i) {
        if (templ.NthElementType(i) == geotemp_FixedPoint) {
            ++count;
        }
    }
    return count;
}

int CGeoRoad::IsAUsefulSurface() const {
    return m_numTemplateApplications > 0 ? 1 : 0;
}
