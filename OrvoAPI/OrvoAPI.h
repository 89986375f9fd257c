#pragma once

/// Everything but what is included separately: coroutine support (Futures/Coroutine.h), the main
/// queue in a GLib or Qt loop (Integration/), and the test kit (Testing/).

#include <OrvoAPI/Base/CompilerCheck.h>

#include <OrvoAPI/Base/Color.h>
#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Base/Shared.h>

#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/Job.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Queues/SerialQueue.h>

#include <OrvoAPI/Platform/Calendar.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Platform/SystemLog.h>

#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLInterceptor.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/HTTP/URLSessionConfiguration.h>

#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Futures/Result.h>

#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/DocumentLoss.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONParseError.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <OrvoAPI/Logging/DebugConsoleLogger.h>
#include <OrvoAPI/Logging/LogLevel.h>
#include <OrvoAPI/Logging/Logger.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Logging/OSLogger.h>

#include <OrvoAPI/Storage/AppStore.h>
#include <OrvoAPI/Storage/Cacheable.h>
#include <OrvoAPI/Storage/KeyedStore.h>
#include <OrvoAPI/Storage/Store.h>

#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Network/SessionError.h>
#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Network/SessionRenewal.h>
#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Network/URLSessionDelegate.h>

#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/CollectionReference.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/IconResource.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/KeySet.h>
#include <OrvoAPI/Model/LineupReference.h>
#include <OrvoAPI/Model/LineupTemplateImage.h>
#include <OrvoAPI/Model/Page.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/ResourceHost.h>
#include <OrvoAPI/Model/ResourceTable.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Model/Video.h>
#include <OrvoAPI/Model/VideoAdMetadata.h>
#include <OrvoAPI/Model/VideoPreview.h>

#include <OrvoAPI/Configuration/ColorPalette.h>
#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Configuration/Constants.h>
#include <OrvoAPI/Configuration/DisplayAd.h>
#include <OrvoAPI/Configuration/LinearStream.h>
#include <OrvoAPI/Configuration/Links.h>
#include <OrvoAPI/Configuration/RatingPromptConfig.h>
#include <OrvoAPI/Configuration/Requirements.h>

#include <OrvoAPI/Linear/LinearProgram.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Linear/LineupScheduled.h>
#include <OrvoAPI/Linear/LineupSlot.h>
#include <OrvoAPI/Linear/LineupSlots.h>

#include <OrvoAPI/Context/Capability.h>
#include <OrvoAPI/Context/Client.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/ContextOptions.h>
#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Context/FetchOptions.h>
#include <OrvoAPI/Context/FetchScope.h>
#include <OrvoAPI/Context/ListWalk.h>
#include <OrvoAPI/Context/RequestReport.h>
#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Context/URLService.h>

#include <OrvoAPI/Version.h>
