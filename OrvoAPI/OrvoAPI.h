#pragma once

/// Everything but the headers that are included on purpose: the coroutine support
/// (Futures/Coroutine.h) and the test kit (Testing/).

#include <OrvoAPI/Platform/Calendar.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Platform/Color.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Platform/Data.h>
#include <OrvoAPI/Platform/Date.h>
#include <OrvoAPI/Platform/DispatchQueue.h>
#include <OrvoAPI/Platform/Fatal.h>
#include <OrvoAPI/Platform/HTTPHeaders.h>
#include <OrvoAPI/Platform/HTTPURLResponse.h>
#include <OrvoAPI/Platform/InlineQueue.h>
#include <OrvoAPI/Platform/Job.h>
#include <OrvoAPI/Platform/Lock.h>
#include <OrvoAPI/Platform/MainQueue.h>
#include <OrvoAPI/Platform/QueueLabels.h>
#include <OrvoAPI/Platform/RawValue.h>
#include <OrvoAPI/Platform/SerialQueue.h>
#include <OrvoAPI/Platform/Shared.h>
#include <OrvoAPI/Platform/SharedText.h>
#include <OrvoAPI/Platform/SystemLog.h>
#include <OrvoAPI/Platform/TailPosition.h>
#include <OrvoAPI/Platform/ThreadAnnotations.h>
#include <OrvoAPI/Platform/URL.h>
#include <OrvoAPI/Platform/URLError.h>
#include <OrvoAPI/Platform/URLInterceptor.h>
#include <OrvoAPI/Platform/URLRequest.h>
#include <OrvoAPI/Platform/URLSessionConfiguration.h>
#include <OrvoAPI/Platform/UUID.h>

#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/Futures/DerivedStates.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Futures/FutureCore.h>
#include <OrvoAPI/Futures/FutureState.h>
#include <OrvoAPI/Futures/FutureWait.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Futures/Result.h>

#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Parsing/JSONNode.h>
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
#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/Environment.h>
#include <OrvoAPI/Context/FetchOptions.h>
#include <OrvoAPI/Context/PageWalk.h>
#include <OrvoAPI/Context/Pages.h>
#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Context/URLService.h>

#include <OrvoAPI/Version.h>
