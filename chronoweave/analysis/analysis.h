// Questions about a trace. Engines (searches, reports) walk the store and know neither canvas nor window;
// windows tie them to a canvas through DialogHost.
#pragma once
