// The qbXML request processor's simulator: the class QBXMLRP2.RequestProcessor over the
// same simulated QuickBooks as the session manager (session_manager.h). It takes qbXML
// documents (ProcessRequest), records each one with what the schema check found
// (request_schema.h), answers a document that breaks the schema as QuickBooks answers
// one it cannot parse, and lets the company simulator answer the others
// (SimulatorQbxmlTransport). Its members are those of request_processor.idl.
//
// It is registered apart from the session manager, so that a test chooses which of the
// two a machine has: qbsim.dll's exports RegisterRequestProcessor and
// UnregisterRequestProcessor.
#pragma once

#include <windows.h>

namespace zorvat::qbsim {

// DllGetClassObject's part for the request processor's CLSID;
// CLASS_E_CLASSNOTAVAILABLE for any other.
HRESULT request_processor_class_object(REFCLSID clsid, REFIID iid, void** object);

}  // namespace zorvat::qbsim
